// Map catalogue, colour files and outlines. Outlines are projected into each map's km
// frame and kept only near the map, so a small map's files hold its own coast, not the world's.
#include "sample_maps.h"

#include <cmath>

#include "picture_writers.h"
#include "rdr_paths.h"
#include "rdr_writers.h"
#include "station_writers.h"

namespace sample {

namespace {

constexpr double kOutlineMarginKm = 10;

// Radar rain: the usual echo colours from light blue through green, yellow and red to purple.
const fixture::ColorClass kRainClasses[] = {
    {255, 255, 255, 0.1f}, {0, 200, 255, 0.5f},  {0, 155, 245, 1},    {0, 74, 245, 2},     {0, 255, 0, 3},
    {0, 190, 0, 4},        {0, 140, 0, 5},       {0, 90, 0, 7},       {255, 255, 0, 10},   {255, 220, 31, 15},
    {249, 205, 0, 20},     {224, 185, 0, 25},    {204, 170, 0, 30},   {255, 102, 0, 40},   {255, 50, 0, 50},
    {210, 0, 0, 60},       {180, 0, 0, 70},      {224, 169, 255, 90}, {201, 105, 255, 110}, {179, 41, 255, 150},
};

// Wet-bulb temperature: 20 classes 1 degree apart, blue below the middle and red above it. The
// program moves the first bound to the month's minimum plus one, so only the spacing matters.
std::vector<fixture::ColorClass> wet_bulb_classes()
{
    const int anchors[][3] = {{49, 54, 149}, {69, 117, 180}, {171, 217, 233}, {255, 255, 220},
                              {254, 224, 144}, {244, 109, 67}, {165, 0, 38}};
    constexpr int kClasses = 20, kAnchors = 7;
    std::vector<fixture::ColorClass> out;
    for (int k = 0; k < kClasses; k++) {
        double pos = k * (kAnchors - 1) / (double)(kClasses - 1);
        int a = std::min((int)pos, kAnchors - 2);
        double f = pos - a;
        auto mix = [&](int c) { return (int)std::lround(anchors[a][c] * (1 - f) + anchors[a + 1][c] * f); };
        out.push_back({mix(0), mix(1), mix(2), (float)(-10 + k)});
    }
    return out;
}

bool near_map(const SampleMap &map, float x, float y)
{
    return x > -kOutlineMarginKm && x < map.nx + kOutlineMarginKm && y > -kOutlineMarginKm &&
           y < map.ny + kOutlineMarginKm;
}

// The lines in the map's km frame, cut into the runs of points near the map.
std::vector<fixture::Polyline> lines_in_map(const SampleMap &map, const std::vector<const std::vector<GeoLine> *> &sets)
{
    fixture::KmProjection projection(map.sx(), map.sy());
    std::vector<fixture::Polyline> out;
    for (const std::vector<GeoLine> *set : sets) {
        for (const GeoLine &line : *set) {
            fixture::Polyline run;
            for (const LonLat &p : line) {
                float x = 0, y = 0;
                projection.km_of_lonlat(p.lon, p.lat, &x, &y);
                if (near_map(map, x, y)) {
                    run.emplace_back(x, y);
                    continue;
                }
                if (run.size() > 1) out.push_back(run);
                run.clear();
            }
            if (run.size() > 1) out.push_back(run);
        }
    }
    return out;
}

}  // namespace

const std::vector<SampleMap> &sample_maps()
{
    static const std::vector<SampleMap> kMaps = {
        {"HR", 0, 0, DOMAIN_NX, DOMAIN_NY},  // the whole grid
        {"SR", 400, 260, 640, 680},          // the southern half of the peninsula
        {"CR", 560, 700, 200, 200},          // the capital region
        {"JJ", 550, 290, 120, 90},           // Jeju
    };
    return kMaps;
}

bool write_sample_catalogue()
{
    std::vector<std::string> lines = {"# code:nx:ny:sx:sy (km; sx, sy: the projection origin from the south-west corner)"};
    for (const SampleMap &m : sample_maps())
        lines.push_back(std::string(m.code) + ":" + std::to_string(m.nx) + ":" + std::to_string(m.ny) + ":" +
                        std::to_string(m.sx()) + ":" + std::to_string(m.sy()));
    return fixture::write_map_catalogue(lines);
}

bool write_sample_colours()
{
    return fixture::write_color_file("color_rn_echo.rgb", {std::begin(kRainClasses), std::end(kRainClasses)}) &&
           fixture::write_color_file("color_ta_e30.rgb", wet_bulb_classes());
}

bool write_sample_outlines(const Geography &geo)
{
    for (const SampleMap &map : sample_maps()) {
        if (!fixture::write_outlines(map.code, 4, lines_in_map(map, {&geo.coast})) ||
            !fixture::write_outlines(map.code, 1, lines_in_map(map, {&geo.borders, &geo.rivers})))
            return false;
    }
    return true;
}

}  // namespace sample
