// The weather of the sample hours as functions of place (km of the whole domain) and time
// (minutes after the first picture, 2024-07-15 09:00): a rain band with embedded heavy cores
// that crosses the peninsula towards the south-south-east, light rain turning to snow over the
// northern mountains, and a wet-bulb temperature from latitude, height, the front and the rain.
// Radar sees within kRadarRangeKm of its sites; the station network within reach of a station.
#ifndef SAMPLE_WEATHER_H
#define SAMPLE_WEATHER_H

#include <vector>

#include "rdr_writers.h"
#include "sample_field.h"
#include "sample_geo.h"
#include "sample_stations.h"

namespace sample {

constexpr double kRadarRangeKm = 250.0;
// Classes of the rain/snow table, as the 4-bit codes and the area block hold them.
constexpr int CLASS_NONE = 1, CLASS_RAIN = 2, CLASS_SLEET = 3, CLASS_SNOW = 4;
// The lightest rate that counts as rain, mm/h.
constexpr double kRainThreshold = 0.1;

struct Core {
    double along_km, across_km;  // place in the band at time 0
    double radius_km, peak_mm_h, peak_minute, life_minutes;
};

struct Weather {
    KmField height;         // terrain, m
    KmField tw_still;       // wet-bulb temperature before front and rain, degrees C
    KmField station_reach;  // 1 where a reporting station is near
    KmField gauge;          // station rain over the true rain
    KmField radar_bias;     // radar rain over the true rain
    KmField type_offset;    // what the stations' rain/snow decision adds to the wet-bulb temperature
    KmField texture;        // small-scale structure of the rain, carried with the cells
    std::vector<std::pair<float, float>> radars;  // sites, km of the domain
    std::vector<Core> cores;
};

Weather make_weather(const Geography &geo, const KmField &terrain, const std::vector<SampleStation> &stations);

// What the radar and the stations see at one place and time.
struct Observed {
    double rain;          // radar rain rate, mm/h
    double station_rain;  // what a gauge would collect, as a rate, mm/h
    double wet_bulb;      // degrees C
    bool radar_sees;
    bool stations_see;
    bool moist;           // where the analysis deems rain or snow possible
    double wind_from_deg; // 10-minute mean wind, the direction it blows from
    double wind_m_s;
};
Observed observe(const Weather &w, double x_km, double y_km, double minute);

// The class that a wet-bulb temperature gives falling precipitation.
int class_of_wet_bulb(double tw);

// The grid file content of one time: 2305 x 2881 cells of 500 m on map code 1.
fixture::Grid grid_at(const Weather &w, double minute);

}  // namespace sample

#endif
