// The grid file reader: class rules of every product, value scaling, block skips, the second
// read of the rain products, and damaged streams.
#include <gtest/gtest.h>
#include <zlib.h>

#include <cstring>

#include "cgiutil.h"
#include "fixture_tree.h"
#include "aws_info_get.h"
#include "aws_rain_data_get.h"
#include "color_table.h"
#include "grid_map_inf.h"
#include "korean_text.h"
#include "rdr_sfc_pty_get.h"
#include "user_input.h"
#include "straightforward.h"
#include "view.h"

namespace {

void set_obs(const char *obs)
{
    copy_text(var.obs, sizeof var.obs, obs);
    product = &product_of(var.obs);
}

// The program's road: header, view, then the grids the view needs (0, or error code 2).
int read_request_grids()
{
    int got;
    if (STRAIGHTFORWARD) {
        got = rdr_sfc_pty_get();
        if (got == 0 && product->marking != ClassRule::None) got = rdr_sfc_pty_get_marking();
        view_of_request(rdr_cmp_head);
    } else {
        GRID_FILE file;
        got = rdr_sfc_pty_open(&file);
        view_of_request(rdr_cmp_head);
        if (got == 0) got = rdr_sfc_pty_read(&file, view_row_plan());
    }
    return got < 0 ? 2 : 0;
}

const uint8_t kCodes[] = {0x21, 0x12, 0x40, 0x02, 0x10, 0x01, 0x22, 0x00, 0x11, 0x33};
constexpr int kCells = sizeof kCodes;

class GridReader : public testing::Test {
protected:
    void SetUp() override
    {
        fixture::reset_root();
        fixture::write_simple_catalogue(100, 120, 50, 60);
        std::memset(&var, 0, sizeof var);
        copy_text(var.map, sizeof var.map, "HR");
        path_ = fixture::grid_path(2024, 1, 15, 12, 35);
        copy_text(var.fname, sizeof var.fname, path_.c_str());
    }

    // Five cells per row, two rows: every code of kCodes once.
    fixture::Grid grid() const
    {
        fixture::Grid g = fixture::make_grid(5, 2);
        for (int k = 0; k < kCells; k++) {
            g.code[k] = kCodes[k];
            g.area[k] = (uint8_t)(k + 1);
            g.tw[k] = fixture::tw_raw(-10.0 + k);
            g.hsr[k] = (int16_t)(150 * k);
            g.rn15x[k] = (int16_t)(-100 + 50 * k);
        }
        return g;
    }

    std::vector<int> classes(const char *obs)
    {
        set_obs(obs);
        EXPECT_EQ(rdr_sfc_pty_get(), 0);
        std::vector<int> out;
        for (int k = 0; k < kCells; k++) out.push_back(pty[k / 5][k % 5]);
        return out;
    }

    std::vector<float> values(const char *obs)
    {
        set_obs(obs);
        EXPECT_EQ(rdr_sfc_pty_get(), 0);
        std::vector<float> out;
        for (int k = 0; k < kCells; k++) out.push_back(data[k / 5][k % 5]);
        return out;
    }

    std::string path_;
};

TEST_F(GridReader, ClassRulesOfEveryCategoricalProduct)
{
    ASSERT_TRUE(fixture::write_grid(grid(), 2024, 1, 15, 12, 35));
    //                                 0x21 0x12 0x40 0x02 0x10 0x01 0x22 0x00 0x11 0x33
    EXPECT_EQ(classes("RNSN"), (std::vector<int>{2, 2, 4, 2, 1, 1, 2, 0, 1, 3}));
    EXPECT_EQ(classes("RNSN1"), (std::vector<int>{1, 1, 4, 2, 1, 1, 2, 0, 1, 3}));
    EXPECT_EQ(classes("RNSN2"), (std::vector<int>{2, 1, 4, 0, 1, 0, 2, 0, 1, 3}));
    EXPECT_EQ(classes("RNEX"), (std::vector<int>{3, 2, 3, 2, 1, 0, 4, 0, 1, 4}));
    EXPECT_EQ(classes("AREA"), (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    // A code with "RNSN" in it but no rule of its own draws nothing.
    EXPECT_EQ(classes("RNSN3"), (std::vector<int>(kCells, 0)));
    EXPECT_EQ(classes("XRNSN"), (std::vector<int>(kCells, 0)));
    EXPECT_EQ(rdr_cmp_head.nx, 5);
    EXPECT_EQ(var.NX, 100);
    EXPECT_EQ(var.SY, 60);
}

TEST_F(GridReader, ValuesAreSignedAndScaledPerBlock)
{
    fixture::Grid g = grid();
    g.tw[1] = 21550;
    g.hsr[1] = 150;
    g.rn15x[1] = -100;
    ASSERT_TRUE(fixture::write_grid(g, 2024, 1, 15, 12, 35));
    std::vector<float> tw = values("TW");
    EXPECT_FLOAT_EQ(tw[1], 15.5f);
    EXPECT_FLOAT_EQ(tw[0], -10.0f);
    EXPECT_FLOAT_EQ(tw[9], -1.0f);
    std::vector<float> hsr = values("HSR");
    EXPECT_FLOAT_EQ(hsr[1], 1.5f);
    EXPECT_FLOAT_EQ(hsr[9], 13.5f);
    std::vector<float> rn = values("RN15X");
    EXPECT_FLOAT_EQ(rn[1], -1.0f);
    EXPECT_FLOAT_EQ(rn[9], 3.5f);
    // Any other code reads int16 values from the code block's position, scaled by 0.01.
    std::vector<float> other = values("rnsn");
    EXPECT_FLOAT_EQ(other[0], (float)((0x21 | (0x12 << 8)) * 0.01));
}

TEST_F(GridReader, RainProductsAlsoGetTheRainSnowClasses)
{
    ASSERT_TRUE(fixture::write_grid(grid(), 2024, 1, 15, 12, 35));
    for (const char *obs : {"HSR", "RN15X"}) {
        set_obs(obs);
        data = nullptr;
        pty = nullptr;
        EXPECT_EQ(read_request_grids(), 0);
        EXPECT_STREQ(var.obs, obs);
        ASSERT_NE(data, nullptr);
        ASSERT_NE(pty, nullptr);
        EXPECT_EQ(pty[0][0], 2);   // 0x21 by the "RNSN" rule
        EXPECT_EQ(pty[0][2], 4);
    }
    set_obs("TW");
    pty = nullptr;
    EXPECT_EQ(read_request_grids(), 0);
    EXPECT_EQ(pty, nullptr);
}

// For a picture the program reads only the grid rows it samples (the straightforward build reads
// them all): a 10 x 40 km map of 1 km cells drawn 5 pixels wide samples rows 2, 4, .., 38 (row
// counter j at 2j cells); the others read as missing.
TEST_F(GridReader, APictureReadsTheRowsItSamples)
{
    fixture::write_simple_catalogue(10, 40, 5, 20);
    fixture::Grid g = fixture::make_grid(10, 40);
    for (std::size_t k = 0; k < g.code.size(); k++) {
        g.code[k] = 0x22;
        g.tw[k] = fixture::tw_raw(7.0);
    }
    ASSERT_TRUE(fixture::write_grid(g, 2024, 1, 15, 12, 35));
    var.size = 5;
    for (const char *obs : {"RNSN", "TW"}) {
        set_obs(obs);
        EXPECT_EQ(read_request_grids(), 0);
        for (int j = 0; j < 40; j++) {
            bool sampled = STRAIGHTFORWARD || (j % 2 == 0 && j > 0);
            if (std::strcmp(obs, "RNSN") == 0)
                EXPECT_EQ(pty[j][9], sampled ? 2 : 0) << "row " << j;
            else
                EXPECT_FLOAT_EQ(data[j][9], sampled ? 7.0f : -999.0f) << "row " << j;
        }
    }
    // Without a canvas there is nothing to sample from: every row is read.
    var.size = 0;
    EXPECT_EQ(read_request_grids(), 0);
    EXPECT_FLOAT_EQ(data[1][0], 7.0f);
}

TEST_F(GridReader, MissingFileAndImplausibleHeaders)
{
    set_obs("RNSN");
    EXPECT_EQ(rdr_sfc_pty_get(), -1);
    EXPECT_EQ(read_request_grids(), 2);

    // Above 64,000,000 cells the file counts as unreadable rather than allocating gigabytes.
    fixture::Grid big = fixture::make_grid(0, 0);
    big.head.nx = 32000;
    big.head.ny = 2001;
    ASSERT_TRUE(fixture::write_grid(big, 2024, 1, 15, 12, 35));
    EXPECT_EQ(rdr_sfc_pty_get(), -1);

    fixture::Grid empty = fixture::make_grid(0, 7);
    ASSERT_TRUE(fixture::write_grid(empty, 2024, 1, 15, 12, 35));
    EXPECT_EQ(rdr_sfc_pty_get(), 0);
}

TEST_F(GridReader, TruncatedStreamsLeaveTheRestMissing)
{
    std::string bytes = fixture::encode_grid(grid());
    // Header and the first 7 code bytes only.
    ASSERT_TRUE(fixture::write_gzip(path_, bytes.substr(0, 64 + 7)));
    EXPECT_EQ(classes("RNSN"), (std::vector<int>{2, 2, 4, 2, 1, 1, 2, 0, 0, 0}));

    // The HSR block starts at 64 + 4N; keep 3 of its values and one odd byte.
    ASSERT_TRUE(fixture::write_gzip(path_, bytes.substr(0, 64 + 4 * kCells + 7)));
    std::vector<float> hsr = values("HSR");
    EXPECT_FLOAT_EQ(hsr[2], 3.0f);
    for (int k = 3; k < kCells; k++) EXPECT_EQ(hsr[k], -999.0f) << k;

    // A stream cut inside the header: nothing usable, but no failure and no stray values.
    ASSERT_TRUE(fixture::write_gzip(path_, bytes.substr(0, 30)));
    EXPECT_EQ(rdr_sfc_pty_get(), 0);

    // A corrupt deflate stream behaves like a short one.
    std::string gz;
    {
        ASSERT_TRUE(fixture::write_gzip(path_, bytes));
        FILE *fp = fopen(path_.c_str(), "rb");
        char buf[4096];
        size_t n = fread(buf, 1, sizeof buf, fp);
        fclose(fp);
        gz.assign(buf, n);
        for (size_t i = 30; i < gz.size(); i += 3) gz[i] = (char)(gz[i] ^ 0x5a);
    }
    ASSERT_TRUE(fixture::write_bytes(path_, gz));
    set_obs("TW");
    EXPECT_EQ(rdr_sfc_pty_get(), 0);
}

TEST_F(GridReader, NegativeHeaderSizesAreFatal)
{
    fixture::Grid g = fixture::make_grid(0, 0);
    g.head.nx = -5;
    g.head.ny = 3;
    ASSERT_TRUE(fixture::write_grid(g, 2024, 1, 15, 12, 35));
    set_obs("RNSN");
    EXPECT_EXIT(rdr_sfc_pty_get(), testing::ExitedWithCode(1), "allocation failure");
    set_obs("TW");
    EXPECT_EXIT(rdr_sfc_pty_get(), testing::ExitedWithCode(1), "allocation failure");
}

}  // namespace
