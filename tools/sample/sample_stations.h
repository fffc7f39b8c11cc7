// The automatic weather stations of the sample tree: a few dozen main stations (numbers 90..299)
// at real cities and several hundred others on South Korean land, with plausible Korean names,
// and the catalogue rows that the station filters drop (other agencies and kinds, closed or
// later stations, no rain sensor). Writers return false when a file cannot be written.
#ifndef SAMPLE_STATIONS_H
#define SAMPLE_STATIONS_H

#include <string>
#include <vector>

#include "sample_field.h"
#include "sample_geo.h"

namespace sample {

// Why a catalogue row does or does not give a station on the map.
enum class Listing { kept, other_agency, other_kind, closed, opens_later, no_rain_sensor };

struct SampleStation {
    int stn_id = 0;
    std::string name;  // UTF-8; the catalogue holds it in EUC-KR
    std::string kind;
    std::string gov;
    Listing listing = Listing::kept;
    double lon = 0, lat = 0, height_m = 0;
    float x = 0, y = 0;  // km of the whole domain
};

std::vector<SampleStation> place_stations(const Geography &geo, const KmField &terrain);
bool write_station_catalogues(const std::vector<SampleStation> &stations);

// Stations whose records are missing in every minute of the sample hours, and stations whose
// rain indicator the QC file rejects (at QC level REJECT_LEVEL) in every minute. Main stations
// (90..299) report in full.
constexpr int REJECT_LEVEL = 3;
bool station_is_silent(int stn_id);
bool station_rain_indicator_rejected(int stn_id);

}  // namespace sample

#endif
