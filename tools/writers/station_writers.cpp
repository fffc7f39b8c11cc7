// Writers of the station catalogues and of the hourly minute data and QC files.
#include "station_writers.h"

#include <algorithm>
#include <cstdio>

#include "file_ptr.h"
#include "lamcproj.h"
#include "rdr_paths.h"
#include "rdr_writers.h"

namespace fixture {

const char *const kValidFrom = "200001010000";
const char *const kValidUntil = "210012312359";

namespace {

constexpr int MINUTES_PER_HOUR = 60;

std::string number_text(const char *format, double v)
{
    char buf[64];
    std::snprintf(buf, sizeof buf, format, v);
    return buf;
}

// Writes the slots in file order, filling every gap with `empty` records from one prepared run.
template <typename Slot>
bool write_hour_file(const std::string &path, std::vector<Slot> slots, const void *empty, bool whole_hour)
{
    constexpr std::size_t record_size = sizeof(Slot::record);
    auto index = [](const Slot &s) { return (long long)s.minute * AWS3_STN_SLOTS + s.stn_id; };
    for (const Slot &s : slots) {
        if (s.minute < 0 || s.minute >= MINUTES_PER_HOUR || s.stn_id < 0 || s.stn_id >= AWS3_STN_SLOTS)
            return false;
    }
    std::stable_sort(slots.begin(), slots.end(), [&](const Slot &a, const Slot &b) { return index(a) < index(b); });
    if (path.empty() || !make_parent_dirs(path)) return false;
    FilePtr fp(std::fopen(path.c_str(), "wb"));
    if (!fp) return false;

    std::string run;
    run.reserve(record_size * AWS3_STN_SLOTS);
    for (int k = 0; k < AWS3_STN_SLOTS; k++) run.append((const char *)empty, record_size);
    long long next = 0;
    auto fill_to = [&](long long end) {
        while (next < end) {
            std::size_t n = (std::size_t)std::min<long long>(end - next, AWS3_STN_SLOTS);
            if (std::fwrite(run.data(), record_size, n, fp.get()) != n) return false;
            next += (long long)n;
        }
        return true;
    };
    for (std::size_t i = 0; i < slots.size(); i++) {
        if (i + 1 < slots.size() && index(slots[i + 1]) == index(slots[i])) continue;
        if (!fill_to(index(slots[i])) || std::fwrite(&slots[i].record, record_size, 1, fp.get()) != 1)
            return false;
        next++;
    }
    if (whole_hour && !fill_to((long long)MINUTES_PER_HOUR * AWS3_STN_SLOTS)) return false;
    return std::fflush(fp.get()) == 0;
}

}  // namespace

std::string station_list_line(const StationListRow &r)
{
    return std::to_string(r.stn_id) + "," + r.tm2 + "," + r.tm1 + "," + r.name + ",-," + r.kind + ",-," + r.gov +
           ",-\n";
}

std::string sensor_line(const SensorRow &r)
{
    return std::to_string(r.stn_id) + ",-," + r.obs_cd + ",-," + r.tm2 + "," + r.tm1 + ",-\n";
}

std::string position_line(const PositionRow &r)
{
    return std::to_string(r.stn_id) + ",-," + r.tm2 + "," + r.tm1 + "," + number_text("%.6f", r.lat) + "," +
           number_text("%.6f", r.lon) + "," + number_text("%.1f", r.ht) + "\n";
}

bool write_station_list_text(const std::string &text) { return write_bytes(path_of(stn_obs_path), text); }
bool write_sensor_list_text(const std::string &text) { return write_bytes(path_of(stn_sensor_path), text); }
bool write_position_list_text(const std::string &text) { return write_bytes(path_of(stn_loc_path), text); }

bool write_station_list(const std::vector<StationListRow> &rows)
{
    return write_station_list_text(lines_of(rows, station_list_line));
}

bool write_sensor_list(const std::vector<SensorRow> &rows) { return write_sensor_list_text(lines_of(rows, sensor_line)); }

bool write_position_list(const std::vector<PositionRow> &rows)
{
    return write_position_list_text(lines_of(rows, position_line));
}

KmProjection::KmProjection(int sx, int sy)
    : map_{6371.0088f, 1.0f, 30.0f, 60.0f, 126.0f, 38.0f, (float)sx, (float)sy, 0}
{
    float lon = 126.0f, lat = 38.0f, x = 0, y = 0;
    lamcproj_ellp(&lon, &lat, &x, &y, 0, &map_);
}

// The projection keeps one cache of constants for the process; every record of this class
// holds the same constants, so a record with `first` set may rely on whichever filled it.
void KmProjection::lonlat_of_km(float x, float y, double *lon, double *lat)
{
    float lon_f = 0, lat_f = 0;
    lamcproj_ellp(&lon_f, &lat_f, &x, &y, 1, &map_);
    *lon = lon_f;
    *lat = lat_f;
}

void KmProjection::km_of_lonlat(double lon, double lat, float *x, float *y)
{
    float lon_f = (float)lon, lat_f = (float)lat;
    lamcproj_ellp(&lon_f, &lat_f, x, y, 0, &map_);
}

void lonlat_of_km(float x, float y, int sx, int sy, double *lon, double *lat)
{
    KmProjection(sx, sy).lonlat_of_km(x, y, lon, lat);
}

bool write_station_catalogues(const std::vector<Station> &stations, int sx, int sy)
{
    std::vector<StationListRow> list;
    std::vector<SensorRow> sensors;
    std::vector<PositionRow> positions;
    for (const Station &s : stations) {
        list.push_back(s.list);
        SensorRow sensor;
        sensor.stn_id = s.list.stn_id;
        sensors.push_back(sensor);
        PositionRow pos;
        pos.stn_id = s.list.stn_id;
        lonlat_of_km(s.x, s.y, sx, sy, &pos.lon, &pos.lat);
        positions.push_back(pos);
    }
    return write_station_list(list) && write_sensor_list(sensors) && write_position_list(positions);
}

AWS3_DATA empty_minute_record()
{
    AWS3_DATA r{};
    r.aws_id = -999;
    std::fill(std::begin(r.d), std::end(r.d), (int16_t)-999);
    return r;
}

AWS3_DATA minute_record(int stn_id, int YY, int MM, int DD, int HH, int MI)
{
    AWS3_DATA r = empty_minute_record();
    r.aws_id = (int16_t)stn_id;
    r.aws_tm = TIMES3{(int16_t)YY, (int8_t)MM, (int8_t)DD, (int8_t)HH, (int8_t)MI};
    return r;
}

bool write_minute_hour(int YY, int MM, int DD, int HH, std::vector<MinuteSlot> slots, bool whole_hour)
{
    AWS3_DATA empty = empty_minute_record();
    return write_hour_file(path_of(aws3_min_path, YY, MM, DD, HH), std::move(slots), &empty, whole_hour);
}

bool write_qc_hour(int YY, int MM, int DD, int HH, std::vector<QcSlot> slots, bool whole_hour)
{
    struct AWS3_QCD empty {};
    return write_hour_file(path_of(aws3_qcd_path, YY, MM, DD, HH), std::move(slots), &empty, whole_hour);
}

}  // namespace fixture
