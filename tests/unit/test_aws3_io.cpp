// The hourly minute and QC files: slot offsets, the one-file cache per accessor, results and
// messages of failures, writing, and the QC levels.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
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
    void TearDown() override { fp_log = nullptr; }

    static std::string data_path(int HH) { return fixture::path_of(aws3_min_path, 2024, 7, 15, HH); }
    static std::string qcd_path(int HH) { return fixture::path_of(aws3_qcd_path, 2024, 7, 15, HH); }

    // One station's minute with its rain indicator set to `rain`.
    static fixture::MinuteSlot slot(int minute, int stn, int rain)
    {
        fixture::MinuteSlot s{minute, stn, fixture::minute_record(stn, 2024, 7, 15, 9, minute)};
        s.record.d[7] = (int16_t)rain;
        return s;
    }

    static int rain_at(int HH, int MI, int stn)
    {
        AWS3_DATA r{};
        int result = AWS3_DATA_IO(2024, 7, 15, HH, MI, stn, &r, 'r');
        return result == 0 ? r.d[7] : result * 1000;
    }
};

// The station number stored at a byte offset, read without the library.
int16_t station_at(const std::string &path, long long offset)
{
    unsigned char b[2] = {0, 0};
    int fd = open(path.c_str(), O_RDONLY);
    EXPECT_EQ(pread(fd, b, 2, (off_t)offset), 2) << path << " at " << offset;
    close(fd);
    return le_i16(b);
}

TEST_F(Aws3Io, FirstAndLastSlotsOfBothFiles)
{
    ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, 9, {slot(59, 9999, 4), slot(0, 0, 3)}, true));
    fixture::QcSlot first{0, 0, {}}, last{59, 9999, {}};
    first.record.aws_id = 1;
    last.record.aws_id = 9999;
    last.record.qc[3] = 1u << 7;
    ASSERT_TRUE(fixture::write_qc_hour(2024, 7, 15, 9, {first, last}, true));

    EXPECT_EQ(station_at(data_path(9), 0), 0);
    EXPECT_EQ(station_at(data_path(9), 59LL * 1840000 + 9999 * 184), 9999);
    EXPECT_EQ(station_at(data_path(9), 59LL * 1840000 + 9998 * 184), -999);  // an empty slot
    EXPECT_EQ(station_at(qcd_path(9), 0), 1);
    EXPECT_EQ(station_at(qcd_path(9), 59LL * 1100000 + 9999 * 110), 9999);

    EXPECT_EQ(rain_at(9, 0, 0), 3);
    EXPECT_EQ(rain_at(9, 59, 9999), 4);
    struct AWS3_QCD q{};
    ASSERT_EQ(AWS3_QCD_IO(2024, 7, 15, 9, 59, 9999, &q, 'r'), 0);
    uint64_t level3 = q.qc[3];  // a copy: the packed field is not aligned for a reference
    EXPECT_EQ(level3, 1u << 7);
    AWS3_DATA r{};
    ASSERT_EQ(AWS3_DATA_READ(2024, 7, 15, 9, 59, 9999, &r, 'r'), 0);
    EXPECT_EQ(r.d[7], -995);

    // The whole-minute form reads the block of 10000 records.
    std::vector<AWS3_DATA> block(AWS3_STN_SLOTS);
    ASSERT_EQ(AWS3_DATA_IO(2024, 7, 15, 9, 59, -1, block.data(), 'r'), 0);
    EXPECT_EQ(block[9999].d[7], 4);
    EXPECT_EQ(block[5].aws_id, -999);

    // Station numbers and modes out of range.
    EXPECT_EQ(AWS3_DATA_IO(2024, 7, 15, 9, 0, 10000, &r, 'r'), -9);
    EXPECT_EQ(AWS3_QCD_IO(2024, 7, 15, 9, 0, 10000, &q, 'r'), -9);
    EXPECT_EQ(AWS3_QCD_IO(2024, 7, 15, 9, 0, -1, &q, 'r'), -9);
    EXPECT_EQ(AWS3_DATA_READ(2024, 7, 15, 9, 0, 10000, &r, 'r'), -1);
    EXPECT_EQ(AWS3_DATA_READ(2024, 7, 15, 9, 0, -1, &r, 'r'), -1);
    EXPECT_EQ(AWS3_DATA_IO(2024, 7, 15, 9, 0, 0, &r, 'x'), -1);
    EXPECT_EQ(AWS3_QCD_IO(2024, 7, 15, 9, 0, 0, &q, 'R'), -1);
}

// A file that is replaced on disk while cached is still read from the open one: so a changed
// value shows exactly when the accessor opened the file again.
TEST_F(Aws3Io, OneOpenPerHourAndANewOneAtTheHourBoundary)
{
    ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, 9, {slot(59, 5, 1)}));
    ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, 10, {slot(0, 5, 2)}));
    auto replace_09 = [](int rain) {
        ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, 12, {slot(59, 5, rain)}));
        ASSERT_EQ(std::rename(data_path(12).c_str(), data_path(9).c_str()), 0);
    };

    EXPECT_EQ(rain_at(9, 59, 5), 1);
    replace_09(3);
    EXPECT_EQ(rain_at(9, 59, 5), 1);  // still the file opened first
    EXPECT_EQ(rain_at(10, 0, 5), 2);
    EXPECT_EQ(rain_at(9, 59, 5), 3);  // the hour came back: opened again
    replace_09(4);
    EXPECT_EQ(AWS3_DATA_IO(0, 0, 0, 0, 0, 0, nullptr, 'c'), 0);
    EXPECT_EQ(rain_at(9, 59, 5), 4);

    // A missing hour caches nothing: the next call opens again and finds the file.
    EXPECT_EQ(rain_at(11, 0, 5), -1000);
    ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, 11, {slot(0, 5, 6)}));
    EXPECT_EQ(rain_at(11, 0, 5), 6);
}

TEST_F(Aws3Io, FailuresAndTheirMessages)
{
    char *text = nullptr;
    std::size_t size = 0;
    fp_log = open_memstream(&text, &size);
    ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, 9, {slot(2, 5, 1)}));

    // The QC file is missing: the data come back as read.
    AWS3_DATA r{};
    EXPECT_EQ(AWS3_DATA_READ(2024, 7, 15, 9, 2, 5, &r, 'r'), 0);
    EXPECT_EQ(r.d[7], 1);
    EXPECT_EQ(AWS3_DATA_READ(2024, 7, 15, 8, 2, 5, &r, 'r'), -1);
    EXPECT_EQ(rain_at(9, 3, 7), -4000);   // beyond the end of the file
    EXPECT_EQ(rain_at(9, -1, 7), -3000);  // before its start
    EXPECT_EQ(rain_at(9, 2, 5), 1);       // the file stayed open

    std::fclose(fp_log);
    fp_log = nullptr;
    std::string log(text, size);
    std::free(text);
    EXPECT_EQ(log, "#[ AWS3 QCD ] File not opened (" + qcd_path(9) + ")\n" +
                       "#[ AWS3 DATA ] File not opened (" + fixture::path_of(aws3_min_path, 2024, 7, 15, 8) +
                       ")\n" + "#[ AWS3 DATA ] IO error (r,202407150903_7)\n" + "#[ AWS3 DATA ] fseek error (" +
                       data_path(9) + ",-1838712)\n");
}

// Reads in slot order come from the 64 KiB fetched with the first; a read that goes back fetches
// afresh and sees what was written to the file in between.
TEST_F(Aws3Io, APassReadsAheadAndAReadBackFetchesAfresh)
{
    ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, 9, {slot(0, 5, 1), slot(0, 6, 1), slot(0, 900, 1)}));
    auto rewrite_rain = [](int stn, int16_t rain) {
        int fd = open(data_path(9).c_str(), O_WRONLY);
        ASSERT_EQ(pwrite(fd, &rain, 2, (off_t)(stn * 184 + 8 + 7 * 2)), 2);
        close(fd);
    };
    EXPECT_EQ(rain_at(9, 0, 5), 1);
    rewrite_rain(6, 2);
    rewrite_rain(900, 3);
    EXPECT_EQ(rain_at(9, 0, 6), 1);    // ahead, inside the window
    EXPECT_EQ(rain_at(9, 0, 900), 3);  // ahead, beyond it (165600 bytes on)
    EXPECT_EQ(rain_at(9, 0, 6), 2);    // back
}

TEST_F(Aws3Io, WritesIntoAnExistingFile)
{
    ASSERT_TRUE(fixture::write_minute_hour(2024, 7, 15, 9, {slot(1, 20, 0)}));
    EXPECT_EQ(rain_at(9, 1, 20), 0);
    fixture::MinuteSlot s = slot(1, 20, 9);
    EXPECT_EQ(AWS3_DATA_IO(2024, 7, 15, 9, 1, 20, &s.record, 'w'), 0);
    EXPECT_EQ(rain_at(9, 1, 20), 9);
    EXPECT_EQ(rain_at(9, 0, 20), -999);
    // Writing never creates a file: the producer of the observations does.
    EXPECT_EQ(AWS3_DATA_IO(2024, 7, 15, 13, 1, 20, &s.record, 'w'), -1);
}

TEST(Aws3Qc, LevelsDecideFromTheHighestFlag)
{
    AWS3_DATA r = fixture::minute_record(1, 2024, 7, 15, 9, 0);
    for (int i = 0; i < 88; i++) r.d[i] = (int16_t)(100 + i);
    struct AWS3_QCD q{};
    q.qc[7] = (1u << 7);
    q.qc[3] = (1u << 7) | (1u << 8);
    q.qc[0] = 1u << 0;
    for (int k = 1; k <= 6; k++) q.qc[k] |= 1ull << (10 + k);  // element 10 + k at level k
    q.qc[2] |= 1ull << 20;
    q.qc[5] |= 1ull << 20;
    q.qc[6] |= 1ull << 63;
    AWS3_QCD(&r, &q);

    EXPECT_EQ(r.d[7], 107);   // level 7 beats level 3
    EXPECT_EQ(r.d[8], -995);  // level 3 alone
    EXPECT_EQ(r.d[0], 100);   // level 0 is not consulted
    for (int k = 1; k <= 6; k++) EXPECT_EQ(r.d[10 + k], k - 998) << "level " << k;
    EXPECT_EQ(r.d[20], -993);
    EXPECT_EQ(r.d[63], -992);
    EXPECT_EQ(r.d[9], 109);

    // Elements from 64 on are never flagged, whatever the words hold.
    for (int k = 1; k <= 6; k++) q.qc[k] = ~0ull;
    q.qc[7] = 0;
    AWS3_QCD(&r, &q);
    EXPECT_EQ(r.d[0], -992);
    for (int i = 64; i < 88; i++) EXPECT_EQ(r.d[i], 100 + i) << "element " << i;
}

}  // namespace
