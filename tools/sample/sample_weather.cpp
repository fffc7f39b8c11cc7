// The rain band is a line along kBandAngle: a narrow convective line at its leading (south-south-
// east) edge and a stratiform shield behind it, broken up by a texture that moves with the cells,
// which drift along the band faster than the band itself moves. Cores grow and decay over their
// own lives. Rain is enhanced over high ground, and the wet-bulb temperature drops behind the
// front and under heavy rain, so the mountains and the north turn to sleet and snow.
#include "sample_weather.h"

#include <algorithm>
#include <cmath>

#include "sample_random.h"
#include "station_writers.h"

namespace sample {

namespace {

constexpr double kBandAngle = 28.0 * M_PI / 180.0;
const double kAlongX = std::cos(kBandAngle), kAlongY = std::sin(kBandAngle);
const double kAcrossX = -std::sin(kBandAngle), kAcrossY = std::cos(kBandAngle);
constexpr double kBandStartX = 640, kBandStartY = 770;  // band axis at 09:00, km of the domain
constexpr double kBandSpeed = 60;                       // km/h towards the south-south-east
constexpr double kCellSpeed = 70;                       // km/h along the band, towards the east-north-east
constexpr double kBandHalfLengthKm = 430;
constexpr double kNorthStartX = 678, kNorthStartY = 938;  // the northern rain area, near 127.4 E 38.9 N
constexpr double kNorthSpeed = 20;                        // km/h towards the east
constexpr double kStationReachKm = 13;
constexpr double kHeaviestRain = 250;  // mm/h; also keeps every rate inside the grid's 16 bits
constexpr int kGridNx = 2305, kGridNy = 2881, kGridDxy = 500;
constexpr int16_t kMissingRaw = -30000;  // -300.00 once scaled: missing

// Radar sites (lon, lat) along the South Korean coasts and hills.
const LonLat kRadarSites[] = {{124.63, 37.97}, {126.96, 37.44}, {128.85, 37.81}, {126.78, 35.99}, {128.99, 36.17},
                              {128.99, 35.12}, {126.33, 34.47}, {126.16, 33.29}, {126.88, 33.38}};

double sigmoid(double z) { return 1.0 / (1.0 + std::exp(-z)); }

// Where the moving parts are at one time.
struct Moment {
    double minute;
    double band_x, band_y;        // a point of the band axis
    double drift;                 // how far the cells have moved along the band, km
    double cells_dx, cells_dy;    // how far the texture has moved, km
    double north_x, north_y;
    std::vector<double> core_amplitude;
};

Moment moment_at(const Weather &w, double minute)
{
    double hours = minute / 60.0;
    Moment m;
    m.minute = minute;
    m.band_x = kBandStartX - kAcrossX * kBandSpeed * hours;
    m.band_y = kBandStartY - kAcrossY * kBandSpeed * hours;
    m.drift = kCellSpeed * hours;
    m.cells_dx = m.band_x - kBandStartX + kAlongX * m.drift;
    m.cells_dy = m.band_y - kBandStartY + kAlongY * m.drift;
    m.north_x = kNorthStartX + kNorthSpeed * hours;
    m.north_y = kNorthStartY;
    for (const Core &c : w.cores) {
        double z = (minute - c.peak_minute) / (0.4 * c.life_minutes);
        m.core_amplitude.push_back(c.peak_mm_h * std::exp(-z * z));
    }
    return m;
}

struct Rain {
    double rate;   // mm/h
    double across; // km behind the band's leading edge (negative: ahead of it)
    double wet;    // how near the rain systems are, 0 .. 1 and a little more
};

Rain rain_at(const Weather &w, const Moment &m, double x, double y)
{
    double dx = x - m.band_x, dy = y - m.band_y;
    double along = dx * kAlongX + dy * kAlongY;
    // The leading edge bows and kinks along the band.
    double across = dx * kAcrossX + dy * kAcrossY + 150.0 * (fractal_noise((along - m.drift) / 200.0, 3.5, 2, 53) - 0.5);
    double a = along / kBandHalfLengthKm, envelope = std::exp(-(a * a) * (a * a));
    double band = 0;
    if (envelope > 1e-4) {
        double texture = w.texture.bilinear(x - m.cells_dx, y - m.cells_dy);
        double line = 9.0 * std::exp(-(across / 13.0) * (across / 13.0));
        double shield = across > 0 ? 2.6 * (1 - std::exp(-across / 10.0)) * std::exp(-across / 60.0) : 0;
        // Drizzle ahead of the line: light enough that radar and gauges often disagree on it.
        double drizzle = 0.14 * std::exp(-((across + 55) / 35.0) * ((across + 55) / 35.0)) * (0.3 + 1.4 * texture);
        band = envelope * (line * (0.3 + 1.4 * texture) + shield * std::max(0.0, 3.2 * (texture - 0.38)) + drizzle);
    }
    double cores = 0;
    for (std::size_t k = 0; k < w.cores.size(); k++) {
        const Core &c = w.cores[k];
        double du = (along - c.along_km - m.drift) / (1.6 * c.radius_km), ds = (across - c.across_km) / c.radius_km;
        if (std::fabs(du) < 4 && std::fabs(ds) < 4) cores += m.core_amplitude[k] * std::exp(-(du * du + ds * ds));
    }
    double nx = (x - m.north_x) / 150.0, ny = (y - m.north_y) / 95.0, north_envelope = std::exp(-(nx * nx + ny * ny));
    double north = 0;
    if (north_envelope > 1e-4) {
        double north_texture = w.texture.bilinear(x - m.north_x + kNorthStartX + 180, y - 160);
        north = 2.6 * north_envelope * std::max(0.0, 3.0 * (north_texture - 0.33));
    }
    double rate = (band + cores + north) * (1.0 + w.height.bilinear(x, y) / 1300.0);
    double wet = envelope * sigmoid((across + 80) / 15.0) * sigmoid((230 - across) / 30.0) + north_envelope;
    return {rate, across, wet};
}

bool radar_sees(const Weather &w, double x, double y)
{
    for (const auto &site : w.radars) {
        double dx = x - site.first, dy = y - site.second;
        if (dx * dx + dy * dy <= kRadarRangeKm * kRadarRangeKm) return true;
    }
    return false;
}

// Radar and gauges each see the rain with errors of their own that vary by place, so they
// disagree where the rain is light.
double seen_rain(const KmField &factor, double rate, double x, double y)
{
    double seen = rate * factor.bilinear(x, y);
    return seen < kRainThreshold ? 0.0 : std::min(seen, kHeaviestRain);
}

Observed observe_at(const Weather &w, const Moment &m, double x, double y)
{
    Rain rain = rain_at(w, m, x, y);
    Observed o;
    o.rain = seen_rain(w.radar_bias, rain.rate, x, y);
    o.station_rain = seen_rain(w.gauge, rain.rate, x, y);
    o.wet_bulb = w.tw_still.bilinear(x, y) - 2.2 * sigmoid(rain.across / 25.0) - 0.1 * std::min(rain.rate, 25.0);
    o.radar_sees = radar_sees(w, x, y);
    o.stations_see = w.station_reach.nearest(x, y) > 0;
    // The area where rain or snow is possible has ragged edges of its own.
    o.moist = rain.wet + 0.8 * (w.texture.bilinear(0.5 * x, 0.5 * y) - 0.5) > 0.35 || rain.rate >= kRainThreshold;
    // South-westerlies ahead of the band veer to north-westerlies behind it, strongest at the line.
    o.wind_from_deg = std::fmod(215 + 95 * sigmoid(rain.across / 40.0) + 360, 360.0);
    o.wind_m_s = 2.5 + 7.0 * std::exp(-(rain.across / 45.0) * (rain.across / 45.0)) + 0.1 * std::min(rain.rate, 40.0);
    return o;
}

KmField station_reach(const std::vector<SampleStation> &stations)
{
    KmField reach(TOPO_COLS, TOPO_ROWS);
    int r = (int)kStationReachKm;
    for (const SampleStation &s : stations) {
        if (s.listing != Listing::kept || station_is_silent(s.stn_id)) continue;
        int c0 = (int)std::lround(std::clamp(s.x, 0.0f, (float)reach.cols));
        int r0 = (int)std::lround(std::clamp(s.y, 0.0f, (float)reach.rows));
        for (int row = std::max(0, r0 - r); row <= std::min(reach.rows - 1, r0 + r); row++)
            for (int col = std::max(0, c0 - r); col <= std::min(reach.cols - 1, c0 + r); col++)
                if (std::hypot(col - s.x, row - s.y) <= kStationReachKm) reach.at(col, row) = 1;
    }
    return reach;
}

// A field over the domain's 1 km points (and a margin) from a function of the point's km.
template <typename F>
KmField field_of(int margin, F f)
{
    KmField out(TOPO_COLS + 2 * margin, TOPO_ROWS + 2 * margin, -margin, -margin);
    for (int r = 0; r < out.rows; r++)
        for (int c = 0; c < out.cols; c++) out.at(c, r) = (float)f(c + out.x0, r + out.y0);
    return out;
}

std::vector<Core> make_cores()
{
    Rng rng(915);
    std::vector<Core> cores;
    for (int k = 0; k < 12; k++) {
        Core c;
        c.along_km = -360 + 60 * k + rng.uniform(-20, 20);
        c.across_km = rng.uniform(-8, 12);
        c.radius_km = rng.uniform(5, 12);
        c.peak_mm_h = rng.uniform(25, 95);
        c.peak_minute = rng.uniform(-20, 80);
        c.life_minutes = rng.uniform(40, 100);
        cores.push_back(c);
    }
    return cores;
}

}  // namespace

Weather make_weather(const Geography &geo, const KmField &terrain, const std::vector<SampleStation> &stations)
{
    Weather w;
    w.height = terrain;
    w.tw_still = field_of(0, [&](double x, double y) {
        // A warm summer south, and a cold air mass over the north beyond about 38 N.
        double lat = geo.lat.nearest(x, y);
        double north = std::max(0.0, lat - 38.2 + 1.4 * (fractal_noise(x / 160.0, y / 160.0, 2, 37) - 0.5));
        return 27.0 - 1.6 * (lat - 33.0) - 6.0 * std::min(north * north, 2.5) - 0.0065 * terrain.bilinear(x, y) +
               1.5 * (fractal_noise(x / 90.0, y / 90.0, 3, 31) - 0.5);
    });
    w.station_reach = station_reach(stations);
    w.gauge = field_of(0, [](double x, double y) { return 0.5 + 0.8 * fractal_noise(x / 30.0, y / 30.0, 3, 41); });
    w.radar_bias = field_of(0, [](double x, double y) { return 0.5 + 0.8 * fractal_noise(x / 30.0, y / 30.0, 3, 59); });
    w.type_offset = field_of(0, [](double x, double y) { return 1.6 * (fractal_noise(x / 40.0, y / 40.0, 3, 43) - 0.5); });
    w.texture = field_of(250, [](double x, double y) { return fractal_noise(x / 35.0, y / 35.0, 5, 47); });
    fixture::KmProjection projection(DOMAIN_SX, DOMAIN_SY);
    for (const LonLat &site : kRadarSites) {
        float x = 0, y = 0;
        projection.km_of_lonlat(site.lon, site.lat, &x, &y);
        w.radars.emplace_back(x, y);
    }
    w.cores = make_cores();
    return w;
}

Observed observe(const Weather &w, double x_km, double y_km, double minute)
{
    return observe_at(w, moment_at(w, minute), x_km, y_km);
}

int class_of_wet_bulb(double tw) { return tw <= 0.5 ? CLASS_SNOW : tw <= 1.5 ? CLASS_SLEET : CLASS_RAIN; }

fixture::Grid grid_at(const Weather &w, double minute)
{
    // The station rain block holds 15-minute amounts: the rate of the period's middle.
    Moment now = moment_at(w, minute), amount_middle = moment_at(w, minute - 7.5);
    fixture::Grid g = fixture::make_grid(kGridNx, kGridNy, kGridDxy, 1);
    double cell_km = kGridDxy / 1000.0;
    for (int j = 0; j < kGridNy; j++) {
        for (int i = 0; i < kGridNx; i++) {
            double x = i * cell_km, y = j * cell_km;
            Observed o = observe_at(w, now, x, y);
            std::size_t k = g.at(i, j);
            int radar = !o.radar_sees ? 0 : o.rain > 0 ? class_of_wet_bulb(o.wet_bulb) : CLASS_NONE;
            int station = !o.stations_see ? 0
                          : o.station_rain > 0 ? class_of_wet_bulb(o.wet_bulb + w.type_offset.bilinear(x, y))
                                               : CLASS_NONE;
            g.code[k] = (uint8_t)(station | (radar << 4));
            g.area[k] = (uint8_t)(o.moist ? class_of_wet_bulb(o.wet_bulb) : CLASS_NONE);
            g.tw[k] = fixture::tw_raw(o.wet_bulb);
            g.hsr[k] = o.radar_sees ? fixture::rain_raw(o.rain) : kMissingRaw;
            double amount_rate = seen_rain(w.gauge, rain_at(w, amount_middle, x, y).rate, x, y);
            g.rn15x[k] = o.stations_see ? fixture::rain_raw(amount_rate) : kMissingRaw;
        }
    }
    return g;
}

}  // namespace sample
