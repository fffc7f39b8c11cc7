// Number scanning of the text formats: scan_float must read exactly what strtof reads (the same
// float, bit for bit, and the same end) while taking its faster road for plain decimals.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "cgiutil.h"

namespace {

void expect_as_strtof(const std::string &text)
{
    char *want_end = nullptr;
    float want = std::strtof(text.c_str(), &want_end);
    float got = 12345.0f;
    const char *end = scan_float(text.c_str(), &got);
    if (want_end == text.c_str()) {
        EXPECT_EQ(end, nullptr) << "'" << text << "'";
        return;
    }
    ASSERT_NE(end, nullptr) << "'" << text << "'";
    EXPECT_EQ(end - text.c_str(), want_end - text.c_str()) << "'" << text << "'";
    if (std::isnan(want))
        EXPECT_TRUE(std::isnan(got)) << "'" << text << "'";
    else
        EXPECT_EQ(std::memcmp(&got, &want, sizeof got), 0) << "'" << text << "' gave " << got << " for " << want;
}

TEST(ScanFloat, ReadsWhatStrtofReads)
{
    const std::vector<std::string> edges = {
        "0", "-0", "+5", " \t-3.25 7", "127.5 37.125", ".5", "-.5", "5.", "5e", "1e+", "1e-3x", "1E3",
        "0x10", "-0X1p3", "inf", "-Infinity", "nan", "NAN(12)", "-", ".", "", "  ", "e5", "1e39", "-1e39",
        "1e-50", "1.17549435e-38", "3.4028235e38", "3.4028236e38", "0.1000000000000000000000000000001",
        "16777217", "123456789012345678901234567890", "00012.50", "1.5\n", "2,5"};
    for (const std::string &t : edges) expect_as_strtof(t);

    // Coordinates as the outline files hold them, and awkward ones around float rounding.
    std::mt19937 rng(7);
    char buf[64];
    for (int k = 0; k < 20000; k++) {
        double v = std::ldexp((double)(rng() % 100000000) / 1e8, (int)(rng() % 60) - 30) * ((rng() & 1) ? 1 : -1);
        const char *formats[] = {"%f", "%.9g", "%.17g", "%e", "%.3f %f"};
        std::snprintf(buf, sizeof buf, formats[k % 5], v, v);
        expect_as_strtof(buf);
    }
}

}  // namespace
