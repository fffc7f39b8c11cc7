// Writers of the station inputs: the three EUC-KR station catalogues and the hourly minute data
// and QC files. Tests state a few rows; the sample data and the benchmark write hundreds of
// stations and whole hours, each file in one pass. Writers return true on success.
#ifndef STATION_WRITERS_H
#define STATION_WRITERS_H

#include <string>
#include <vector>

#include "aws3_io.h"
#include "map_ini.h"

namespace fixture {

// Validity texts: the readers use their first 10 characters, YYYYMMDDHH.
extern const char *const kValidFrom;
extern const char *const kValidUntil;

// Rows of the three catalogues, fields in the order a test most often sets them.
// Station list: "id,until,from,name,-,kind,-,agency,-"; the name is EUC-KR ("가람").
struct StationListRow {
    int stn_id = 0;
    std::string kind = "SA";
    std::string gov = "GFR";
    std::string name = "\xb0\xa1\xb6\xf7";
    std::string tm1 = kValidFrom;
    std::string tm2 = kValidUntil;
};

// Sensor list: "id,-,code,-,until,from,-".
struct SensorRow {
    int stn_id = 0;
    std::string obs_cd = "RN";
    std::string tm1 = kValidFrom;
    std::string tm2 = kValidUntil;
};

// Position list: "id,-,until,from,lat,lon,height".
struct PositionRow {
    int stn_id = 0;
    double lon = 127.0;
    double lat = 37.5;
    double ht = 50.0;
    std::string tm1 = kValidFrom;
    std::string tm2 = kValidUntil;
};

// Each line ends with a line feed.
std::string station_list_line(const StationListRow &row);
std::string sensor_line(const SensorRow &row);
std::string position_line(const PositionRow &row);

// The lines of several rows, to which a test may add lines of its own.
template <typename Row>
std::string lines_of(const std::vector<Row> &rows, std::string (*line)(const Row &))
{
    std::string text;
    for (const Row &row : rows) text += line(row);
    return text;
}

// The catalogues as given text, byte for byte.
bool write_station_list_text(const std::string &text);
bool write_sensor_list_text(const std::string &text);
bool write_position_list_text(const std::string &text);

bool write_station_list(const std::vector<StationListRow> &rows);
bool write_sensor_list(const std::vector<SensorRow> &rows);
bool write_position_list(const std::vector<PositionRow> &rows);

// A station that all three catalogues describe: listed, with a rain sensor, placed at (x, y) km
// of a map whose projection origin lies at (sx, sy) km.
struct Station {
    StationListRow list;
    float x = 0;
    float y = 0;
};
bool write_station_catalogues(const std::vector<Station> &stations, int sx, int sy);

// The system's projection (the station catalogue's record) with its origin at (sx, sy) km of a
// map. The derived constants are computed once, at construction, for every later conversion.
class KmProjection {
public:
    KmProjection(int sx, int sy);
    void lonlat_of_km(float x, float y, double *lon, double *lat);
    void km_of_lonlat(double lon, double lat, float *x, float *y);

private:
    lamc_parameter map_;
};

// The longitude and latitude of the map point (x, y) km, origin at (sx, sy) km.
void lonlat_of_km(float x, float y, int sx, int sy, double *lon, double *lat);

// A slot that no station has written: station -999, zero time, every element -999.
AWS3_DATA empty_minute_record();
// A station's record of one minute, stamped with its number and time, every element missing.
AWS3_DATA minute_record(int stn_id, int YY, int MM, int DD, int HH, int MI);

struct MinuteSlot {
    int minute;
    int stn_id;
    AWS3_DATA record;
};

// A QC record without flags; set bit i of qc[k] to flag element i at level k.
struct QcSlot {
    int minute;
    int stn_id;
    struct AWS3_QCD record;
};

// One hour file in one pass, slots in any order (of two for one slot the later wins); every
// other slot is empty (data) or zero (QC). The file ends after the last slot given, or after
// minute 59 with `whole_hour`. Slots outside minutes 0..59 or stations 0..9999 fail.
bool write_minute_hour(int YY, int MM, int DD, int HH, std::vector<MinuteSlot> slots, bool whole_hour = false);
bool write_qc_hour(int YY, int MM, int DD, int HH, std::vector<QcSlot> slots, bool whole_hour = false);

}  // namespace fixture

#endif
