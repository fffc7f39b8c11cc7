// The projection against worked values, round trips, the cache of derived constants, and an
// independent implementation (PROJ's cs2cs, same ellipsoid and parameters) over the whole map.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "file_ptr.h"
#include "lamcproj.h"

namespace {

lamc_parameter korea(float xo = 0, float yo = 0)
{
    return lamc_parameter{6371.0088f, 1.0f, 30.0f, 60.0f, 126.0f, 38.0f, xo, yo, 0};
}

struct Row {
    float lon, lat;
    double x, y;
};

const Row kWorked[] = {
    {126.0f, 38.0f, 0.0, 0.0},
    {127.0f, 37.5f, 86.2349, -53.5529},
    {129.0f, 35.0f, 268.8191, -320.4683},
    {124.0f, 33.0f, -184.6941, -541.7037},
    {131.0f, 43.0f, 393.9190, 550.8185},
};

TEST(Lamcproj, WorkedValuesAndRoundTrips)
{
    lamc_parameter map = korea();
    for (const Row &r : kWorked) {
        float lon = r.lon, lat = r.lat, x = 0, y = 0;
        lamcproj_ellp(&lon, &lat, &x, &y, 0, &map);
        EXPECT_NEAR(x, r.x, 0.001) << r.lon << "," << r.lat;
        EXPECT_NEAR(y, r.y, 0.001) << r.lon << "," << r.lat;
        EXPECT_EQ(map.first, 1);
        float lon2 = 0, lat2 = 0;
        lamcproj_ellp(&lon2, &lat2, &x, &y, 1, &map);
        EXPECT_NEAR(lon2, r.lon, 2e-5);
        EXPECT_NEAR(lat2, r.lat, 2e-5);
    }
    // The origin of the record lands on (xo, yo).
    lamc_parameter shifted = korea(560.0f, 840.0f);
    float lon = 126.0f, lat = 38.0f, x = 0, y = 0;
    lamcproj_ellp(&lon, &lat, &x, &y, 0, &shifted);
    EXPECT_FLOAT_EQ(x, 560.0f);
    EXPECT_FLOAT_EQ(y, 840.0f);
}

TEST(Lamcproj, TheCacheServesRecordsThatSayFirstIsDone)
{
    lamc_parameter a = korea();
    float lon = 129.0f, lat = 35.0f, x1 = 0, y1 = 0;
    lamcproj_ellp(&lon, &lat, &x1, &y1, 0, &a);

    // A record with other parallels but first == 1 still gets the cached constants.
    lamc_parameter other = korea();
    other.slat1 = 10.0f;
    other.first = 1;
    float x2 = 0, y2 = 0;
    lamcproj_ellp(&lon, &lat, &x2, &y2, 0, &other);
    EXPECT_EQ(x1, x2);
    EXPECT_EQ(y1, y2);

    // Reset to 0, it recomputes and the result changes.
    other.first = 0;
    lamcproj_ellp(&lon, &lat, &x2, &y2, 0, &other);
    EXPECT_NE(x1, x2);
    EXPECT_EQ(other.first, 1);
}

// Longitudes 118..136 and latitudes 28..46 every 1.5 degrees, projected by cs2cs in one run.
TEST(Lamcproj, AgreesWithProjOverTheMap)
{
    std::vector<std::pair<float, float>> points;
    for (float lon = 118.0f; lon <= 136.0f; lon += 1.5f)
        for (float lat = 28.0f; lat <= 46.0f; lat += 1.5f) points.emplace_back(lon, lat);

    char input[] = "/tmp/lamcproj_points_XXXXXX";
    int fd = mkstemp(input);
    ASSERT_GE(fd, 0);
    {
        FilePtr in(fdopen(fd, "w"));
        for (const auto &p : points) std::fprintf(in.get(), "%.6f %.6f\n", p.first, p.second);
    }
    const std::string ellipsoid = " +a=6378138 +rf=298.257223563 +no_defs";
    std::string command = "cs2cs -f %.6f +proj=longlat" + ellipsoid +
                          " +to +proj=lcc +lat_1=30 +lat_2=60 +lon_0=126 +lat_0=38 +units=km" + ellipsoid +
                          " < " + input;
    std::vector<std::pair<double, double>> expected;
    FILE *out = popen(command.c_str(), "r");
    ASSERT_NE(out, nullptr);
    double x, y, z;
    while (std::fscanf(out, "%lf %lf %lf", &x, &y, &z) == 3) expected.emplace_back(x, y);
    int status = pclose(out);
    unlink(input);
    ASSERT_EQ(status, 0) << "cs2cs (Debian package proj-bin) did not run";
    ASSERT_EQ(expected.size(), points.size());

    lamc_parameter map = korea();
    for (std::size_t k = 0; k < points.size(); k++) {
        float lon = points[k].first, lat = points[k].second, px = 0, py = 0;
        lamcproj_ellp(&lon, &lat, &px, &py, 0, &map);
        EXPECT_NEAR(px, expected[k].first, 0.001) << lon << "," << lat;
        EXPECT_NEAR(py, expected[k].second, 0.001) << lon << "," << lat;
    }
}

}  // namespace
