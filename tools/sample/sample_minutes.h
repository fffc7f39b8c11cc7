// The stations' hourly minute data and QC files for a range of minutes (after 09:00 of the
// sample day; negative minutes fall in the hour before), observed from the sample weather:
// rain indicator, 15-minute rain, wind, temperature (element 68) and humidity (element 69), all
// in tenths. Silent stations and a few lost minutes stay missing; the rain indicator of some
// stations is rejected by QC. Returns false when a file cannot be written.
#ifndef SAMPLE_MINUTES_H
#define SAMPLE_MINUTES_H

#include <vector>

#include "sample_stations.h"
#include "sample_weather.h"

namespace sample {

// Elements of the minute record that the sample fills.
constexpr int ELEMENT_RAIN_INDICATOR = 7;
constexpr int ELEMENT_WIND_DIRECTION = 65;
constexpr int ELEMENT_WIND_SPEED = 66;
constexpr int ELEMENT_RAIN_15MIN = 67;
constexpr int ELEMENT_TEMPERATURE = 68;
constexpr int ELEMENT_HUMIDITY = 69;

bool write_station_minutes(const Weather &w, const std::vector<SampleStation> &stations, int first_minute,
                           int last_minute);

// The sample day's first picture, 2024-07-15 09:00, as a minute sequence number.
int sample_start_seq();

}  // namespace sample

#endif
