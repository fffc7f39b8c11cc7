// The grid stream's two inflaters against each other: ISA-L must give exactly the bytes (and the
// read sizes) that zlib's gzread gives, for whole files, several members, trailing bytes, files
// that are not compressed and files cut anywhere, and at damage the same bytes as far as both go.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fixture_tree.h"
#include "grid_stream.h"

namespace {

// Compressible like a grid: runs of one byte with a sprinkle of noise.
std::string content(std::size_t n)
{
    std::string s(n, '\0');
    uint32_t x = 12345;
    for (std::size_t i = 0; i < n; i++) {
        x = x * 1103515245u + 12345u;
        s[i] = (char)((i / 700) % 5 + ((x >> 16) % 13 == 0 ? (x >> 8) & 0xff : 0));
    }
    return s;
}

struct Reads {
    std::string bytes;
    std::vector<long> sizes;
};

// Header-sized read, an optional skip, then reads of `chunk` bytes to the end.
Reads read_all(const std::string &path, Inflater inflater, long skip, long chunk)
{
    Reads r;
    GridStreamPtr s = grid_stream_open(path.c_str(), inflater);
    if (!s) return r;
    std::vector<char> buf((std::size_t)chunk);
    long got = grid_stream_read(s.get(), buf.data(), 64);
    r.sizes.push_back(got);
    r.bytes.append(buf.data(), (std::size_t)got);
    grid_stream_skip(s.get(), skip);
    while ((got = grid_stream_read(s.get(), buf.data(), chunk)) > 0) {
        r.sizes.push_back(got);
        r.bytes.append(buf.data(), (std::size_t)got);
    }
    return r;
}

class GridStreamInflaters : public testing::Test {
protected:
    void SetUp() override
    {
        if (!grid_has_isal()) GTEST_SKIP() << "built without ISA-L";
        fixture::reset_root();
    }

    std::string gzip(const std::string &bytes, int level)
    {
        EXPECT_TRUE(fixture::write_gzip(path_, bytes, level));
        std::ifstream in(path_, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

    // Both inflaters, two ways of reading: the same bytes in the same reads.
    void expect_alike(const std::string &file, const std::string &what)
    {
        ASSERT_TRUE(fixture::write_bytes(path_, file));
        for (long skip : {0L, 100001L}) {
            for (long chunk : {2305L, 262144L}) {
                Reads z = read_all(path_, Inflater::Zlib, skip, chunk);
                Reads i = read_all(path_, Inflater::Isal, skip, chunk);
                EXPECT_EQ(z.sizes, i.sizes) << what << ", skip " << skip << ", chunk " << chunk;
                EXPECT_TRUE(z.bytes == i.bytes) << what << ", skip " << skip << ", chunk " << chunk;
            }
        }
    }

    const std::string path_ = fixture::grid_path(2024, 7, 15, 9, 30);
    const std::string text_ = content(700000);
};

TEST_F(GridStreamInflaters, WholeFilesMembersTrailingBytesAndPlainFiles)
{
    for (int level : {0, 1, 6, 9}) expect_alike(gzip(text_, level), "level " + std::to_string(level));
    std::string two = gzip(text_.substr(0, 333333), 1) + gzip(text_.substr(333333), 9);
    expect_alike(two, "two members");
    expect_alike(gzip(text_, 6) + "junk after the member", "trailing bytes");
    expect_alike(text_, "not compressed");
    expect_alike(std::string("\x1f"), "one byte");
    expect_alike("", "empty file");
    // The whole content arrived, and only it.
    ASSERT_TRUE(fixture::write_bytes(path_, two));
    EXPECT_TRUE(read_all(path_, Inflater::Isal, 0, 4096).bytes == text_);
}

TEST_F(GridStreamInflaters, FilesCutAnywhere)
{
    std::string whole = gzip(text_, 6);
    for (std::size_t cut : {1, 2, 5, 10, 11, 20}) expect_alike(whole.substr(0, cut), "cut at " + std::to_string(cut));
    for (std::size_t k = 1; k < 40; k++) {
        std::size_t cut = whole.size() * k / 40 + k;
        expect_alike(whole.substr(0, cut), "cut at " + std::to_string(cut));
    }
    expect_alike(whole.substr(0, whole.size() - 3), "cut in the trailer");
}

TEST_F(GridStreamInflaters, DamagedDataGiveZlibsBytesAsFarAsBothGo)
{
    // Bits flipped in the second half of the deflate data. Where the data break the inflaters may
    // stop at different places (and zlib drops what its last read had), so one may give a few
    // bytes more; what both give is the same.
    std::string flipped = gzip(text_, 6);
    for (std::size_t i = flipped.size() / 2; i < flipped.size(); i += 97) flipped[i] = (char)(flipped[i] ^ 0x5a);
    // A second member that is not one.
    std::string second_header = gzip(text_.substr(0, 100000), 6) + "\x1f\x8b" + "not a member";
    for (const std::string &file : {flipped, second_header}) {
        ASSERT_TRUE(fixture::write_bytes(path_, file));
        for (long chunk : {2305L, 262144L}) {
            std::string z = read_all(path_, Inflater::Zlib, 0, chunk).bytes;
            std::string i = read_all(path_, Inflater::Isal, 0, chunk).bytes;
            std::size_t both = std::min(z.size(), i.size());
            EXPECT_EQ(z.compare(0, both, i, 0, both), 0) << "chunk " << chunk;
            // The undamaged start arrived; the damaged end did not.
            EXPECT_GE(i.size(), 100000u);
            EXPECT_EQ(i.compare(0, 100000, text_, 0, 100000), 0);
            EXPECT_LT(i.size(), text_.size());
        }
    }
}

}  // namespace
