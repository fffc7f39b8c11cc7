// The hourly minute and QC files under their accessors: slots, reads in any order, failures and
// their messages, and writing. (The grid stream's two inflaters are held to each other by the
// pictures of the fast and the straightforward builds.)
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <vector>

#include "fixture_tree.h"
#include "le_bytes.h"
#include "rdr_paths.h"
#include "station_writers.h"

namespace {

class Aws3Io : public testing::Test {
protected:
    void SetUp() override
    {
        fixture::reset_root();
        // The caches outlive a test; a file of a wiped tree must not serve the next one.
        AWS3_DATA_IO(0, 0, 0, 0, 0, 0, nullptr, 'c');
        AWS3_QCD_IO(0, 0, 0, 0, 0, 0, nullptr, 'c');
    }
    static std::string data_path(int HH) { return fixture::path_of(aws3_min_path, 2024, 7, 15, HH); }

    // One station's minute with its rain indicator set to `rain`.
    static fixture::MinuteSlot slot(int minute, int stn, int rain)
    {
        fixture::MinuteSlot s{minute, stn, fixture::minute_record(stn, 2024, 7, 15, 9, minute)};
        s.record.d[7] = (int16_t)rain;
        return s;
    }
    // The rain indicator read through the library, or its result times 1000.
    static int rain_at(int HH, int MI, int stn, int MM = 7)
    {
        AWS3_DATA r{};
        int result = AWS3_DATA_IO(2024, MM, 15, HH, MI, stn, &r, 'r');
        return result == 0 ? r.d[7] : result * 1000;
    }
};

TEST_F(Aws3Io, SlotsOfBothFilesAndArgumentsOutOfRange)
{
    ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, 9, {slot(59, 9999, 4), slot(0, 0, 3)}, true));
    fixture::QcSlot last{59, 9999, {}};
    last.record.qc[3] = 1u << 7;
    ASSERT_TRUE(fixture::write_qc_hour(2024, 7, 15, 9, {last}, true));
    // Station numbers where the file holds them, read without the library.
    int fd = open(data_path(9).c_str(), O_RDONLY);
    unsigned char b[4] = {0};
    EXPECT_EQ(pread(fd, b, 2, 59LL * 1840000 + 9999 * 184), 2);
    EXPECT_EQ(pread(fd, b + 2, 2, 59LL * 1840000 + 9998 * 184), 2);
    EXPECT_EQ(lseek(fd, 0, SEEK_END), 60LL * 1840000);
    close(fd);
    EXPECT_EQ(le_i16(b), 9999);
    EXPECT_EQ(le_i16(b + 2), -999);  // an empty slot

    EXPECT_EQ(rain_at(9, 0, 0), 3);
    EXPECT_EQ(rain_at(9, 59, 9999), 4);
    AWS3_DATA r{};
    ASSERT_EQ(AWS3_DATA_READ(2024, 7, 15, 9, 59, 9999, &r, 'r'), 0);
    EXPECT_EQ(r.d[7], -995);  // flagged at QC level 3
    std::vector<AWS3_DATA> block(AWS3_STN_SLOTS);  // the whole-minute form
    ASSERT_EQ(AWS3_DATA_IO(2024, 7, 15, 9, 59, -1, block.data(), 'r'), 0);
    EXPECT_EQ(block[9999].d[7], 4);
    EXPECT_EQ(block[5].aws_id, -999);

    struct AWS3_QCD q{};
    struct Row { int got, want; } rows[] = {
        {AWS3_DATA_IO(2024, 7, 15, 9, 0, 10000, &r, 'r'), -9}, {AWS3_QCD_IO(2024, 7, 15, 9, 0, 10000, &q, 'r'), -9},
        {AWS3_QCD_IO(2024, 7, 15, 9, 0, -1, &q, 'r'), -9},     {AWS3_DATA_READ(2024, 7, 15, 9, 0, 10000, &r, 'r'), -1},
        {AWS3_DATA_READ(2024, 7, 15, 9, 0, -1, &r, 'r'), -1},  {AWS3_DATA_IO(2024, 7, 15, 9, 0, 0, &r, 'x'), -1},
        {AWS3_QCD_IO(2024, 7, 15, 9, 0, 0, &q, 'R'), -1},
    };
    for (const Row &row : rows) EXPECT_EQ(row.got, row.want) << &row - rows;
}

// Records come back right in any order of reading: forward inside the bytes fetched at once and
// beyond them, back, from another hour or month and back again; a missing hour is looked for again.
TEST_F(Aws3Io, AnyOrderOfReadsAndHours)
{
    const int stations[] = {5, 6, 355, 356, 900, 9999};
    std::vector<fixture::MinuteSlot> slots;
    for (int k = 0; k < 6; k++) slots.push_back(slot(59, stations[k], k + 1));
    ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, 9, slots));
    ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, 10, {slot(0, 5, 7)}) && fixture::write_minute_hour(2024, 8, 15, 9, {slot(59, 5, 8)}));
    std::vector<int> got;
    for (int k : {0, 1, 4, 1, 5, 2, 3, -1, 3, 0, -2, 0})
        got.push_back(k == -1 ? rain_at(10, 0, 5) : k == -2 ? rain_at(9, 59, 5, 8) : rain_at(9, 59, stations[k]));
    EXPECT_EQ(got, (std::vector<int>{1, 2, 5, 2, 6, 3, 4, 7, 4, 1, 8, 1}));
    EXPECT_EQ(rain_at(11, 0, 5), -1000);
    ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, 11, {slot(0, 5, 6)}));
    EXPECT_EQ(rain_at(11, 0, 5), 6);
}

TEST_F(Aws3Io, FailuresTheirMessagesAndWriting)
{
    char *text = nullptr;
    std::size_t size = 0;
    fp_log = open_memstream(&text, &size);
    ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, 9, {slot(2, 5, 1)}));
    AWS3_DATA r{};
    EXPECT_EQ(AWS3_DATA_READ(2024, 7, 15, 9, 2, 5, &r, 'r'), 0);  // no QC file: the data as read
    EXPECT_EQ(r.d[7], 1);
    EXPECT_EQ(AWS3_DATA_READ(2024, 7, 15, 8, 2, 5, &r, 'r'), -1);
    EXPECT_EQ(rain_at(9, 3, 7), -4000);   // beyond the end of the file
    EXPECT_EQ(rain_at(9, -1, 7), -3000);  // before its start
    EXPECT_EQ(rain_at(9, 2, 5), 1);       // the file stayed open
    std::fclose(fp_log);
    fp_log = nullptr;
    EXPECT_EQ(std::string(text, size),
              "#[ AWS3 QCD ] File not opened (" + fixture::path_of(aws3_qcd_path, 2024, 7, 15, 9) + ")\n" +
                  "#[ AWS3 DATA ] File not opened (" + data_path(8) + ")\n#[ AWS3 DATA ] IO error (r,202407150903_7)\n" +
                  "#[ AWS3 DATA ] fseek error (" + data_path(9) + ",-1838712)\n");
    std::free(text);

    fixture::MinuteSlot s = slot(2, 5, 9);
    EXPECT_EQ(AWS3_DATA_IO(2024, 7, 15, 9, 2, 5, &s.record, 'w'), 0);
    EXPECT_EQ(rain_at(9, 2, 5), 9);
    EXPECT_EQ(rain_at(9, 1, 5), -999);
    // Writing never creates a file: the producer of the observations does.
    EXPECT_EQ(AWS3_DATA_IO(2024, 7, 15, 13, 1, 20, &s.record, 'w'), -1);
}

}  // namespace
