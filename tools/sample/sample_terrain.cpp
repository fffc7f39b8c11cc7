// Terrain as rolling hills plus ridges along the real ranges, raised with the distance from the
// sea so that coasts stay low. Each ridge is a line of (lon, lat) points with a crest height and
// a half-width; noise breaks crests into peaks and passes.
#include "sample_terrain.h"

#include <algorithm>
#include <cmath>

#include "picture_writers.h"
#include "sample_random.h"

namespace sample {

namespace {

struct Ridge {
    std::vector<LonLat> line;
    double crest_m;
    double half_width_km;
};

const std::vector<Ridge> &ridges()
{
    static const std::vector<Ridge> kRidges = {
        // Taebaek range along the east coast (with Kumgangsan), Sobaek range, Jirisan, Charyeong.
        {{{127.90, 39.20}, {128.10, 38.90}, {128.35, 38.60}, {128.60, 38.00}, {128.85, 37.60}, {129.05, 37.20},
          {129.15, 36.70}, {129.20, 36.20}},
         1150, 24},
        {{{128.70, 37.10}, {128.30, 36.85}, {127.95, 36.30}, {127.75, 35.80}, {127.60, 35.40}}, 850, 22},
        {{{127.73, 35.34}}, 1100, 12},
        {{{127.00, 36.90}, {126.70, 36.40}}, 350, 15},
        // Hallasan on Jeju.
        {{{126.53, 33.36}}, 1800, 13},
        // The north: Nangnim and Hamgyong ranges, the Kaema plateau, Paektusan, Myohyang, Masikryong.
        {{{126.90, 39.80}, {127.20, 40.60}, {127.30, 41.20}}, 1400, 32},
        {{{128.40, 40.90}, {129.20, 41.60}, {129.80, 42.30}}, 1700, 32},
        {{{127.80, 40.90}}, 1200, 60},
        {{{128.08, 42.00}}, 1500, 18},
        {{{126.30, 40.00}}, 900, 25},
        {{{127.30, 39.20}, {127.10, 38.80}}, 900, 22},
        // Neighbours: Changbai and Liaodong hills, the Chugoku mountains, Kyushu.
        {{{128.00, 42.30}, {129.00, 43.00}}, 900, 55},
        {{{122.50, 40.20}, {124.50, 41.30}}, 700, 40},
        {{{131.50, 34.60}, {133.50, 35.20}}, 900, 30},
        {{{130.70, 32.50}, {131.10, 33.30}}, 1000, 35},
    };
    return kRidges;
}

double km_between(const LonLat &a, double lon, double lat)
{
    double dx = (lon - a.lon) * 111.2 * std::cos(lat * M_PI / 180.0), dy = (lat - a.lat) * 111.2;
    return std::sqrt(dx * dx + dy * dy);
}

// Distance in km from a point to a line of (lon, lat) points, in a local flat frame.
double km_to_line(const std::vector<LonLat> &line, double lon, double lat)
{
    if (line.size() == 1) return km_between(line[0], lon, lat);
    double best = 1e9, k = std::cos(lat * M_PI / 180.0);
    for (std::size_t i = 1; i < line.size(); i++) {
        double ax = line[i - 1].lon * k, ay = line[i - 1].lat, bx = line[i].lon * k, by = line[i].lat;
        double px = lon * k, py = lat, vx = bx - ax, vy = by - ay;
        double t = std::clamp(((px - ax) * vx + (py - ay) * vy) / (vx * vx + vy * vy), 0.0, 1.0);
        double dx = px - (ax + t * vx), dy = py - (ay + t * vy);
        best = std::min(best, std::sqrt(dx * dx + dy * dy) * 111.2);
    }
    return best;
}

// Chamfer distance from the nearest water point, in km.
KmField distance_from_sea(const KmField &land)
{
    const float far = 1e6f, side = 1.0f, diagonal = 1.4142f;
    KmField d(land.cols, land.rows);
    for (std::size_t k = 0; k < d.v.size(); k++) d.v[k] = land.v[k] > 0 ? far : 0.0f;
    auto relax = [&](int c, int r, int dc, int dr, float step) {
        int cc = c + dc, rr = r + dr;
        if (cc >= 0 && cc < d.cols && rr >= 0 && rr < d.rows) d.at(c, r) = std::min(d.at(c, r), d.at(cc, rr) + step);
    };
    for (int r = 0; r < d.rows; r++)
        for (int c = 0; c < d.cols; c++) {
            relax(c, r, -1, 0, side);
            relax(c, r, 0, -1, side);
            relax(c, r, -1, -1, diagonal);
            relax(c, r, 1, -1, diagonal);
        }
    for (int r = d.rows - 1; r >= 0; r--)
        for (int c = d.cols - 1; c >= 0; c--) {
            relax(c, r, 1, 0, side);
            relax(c, r, 0, 1, side);
            relax(c, r, 1, 1, diagonal);
            relax(c, r, -1, 1, diagonal);
        }
    return d;
}

bool in_western_plains(double lon, double lat)
{
    return (lon < 127.2 && lat > 34.6 && lat < 37.9) || (lon < 126.0 && lat > 38.2 && lat < 39.8);
}

double height_at(double x, double y, double lon, double lat, double from_sea)
{
    double hills = 30 + 280 * std::pow(fractal_noise(x / 55.0, y / 55.0, 4, 11), 1.6);
    if (in_western_plains(lon, lat)) hills *= 0.3;
    double crests = 0;
    double roughness = 0.45 + 1.0 * fractal_noise(x / 14.0, y / 14.0, 3, 23);
    for (const Ridge &ridge : ridges()) {
        double d = km_to_line(ridge.line, lon, lat);
        double w = ridge.half_width_km;
        if (d < 3 * w) crests += ridge.crest_m * std::exp(-(d * d) / (w * w));
    }
    double rise = 1.0 - std::exp(-from_sea / 10.0);
    return std::min(2900.0, rise * (hills + crests * roughness) + 2.0);
}

}  // namespace

KmField make_terrain(const Geography &geo)
{
    KmField from_sea = distance_from_sea(geo.land);
    KmField h(geo.land.cols, geo.land.rows);
    for (int r = 0; r < h.rows; r++)
        for (int c = 0; c < h.cols; c++)
            if (geo.land.at(c, r) > 0)
                h.at(c, r) = (float)height_at(c, r, geo.lon.at(c, r), geo.lat.at(c, r), from_sea.at(c, r));
    return h;
}

bool write_sample_terrain(const KmField &heights)
{
    fixture::Terrain terrain;
    for (int r = 0; r < TOPO_ROWS; r++)
        for (int c = 0; c < TOPO_COLS; c++) terrain.at(r, c) = (int16_t)std::lround(heights.at(c, r) * 10.0);
    return fixture::write_terrain(terrain);
}

}  // namespace sample
