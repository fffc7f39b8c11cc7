// Writes the sample data tree under the build's root (RDR_ROOT): the map catalogue (HR, SR, CR,
// JJ), colour files, outlines from the real coastlines and borders, synthetic terrain, the Korean
// font, about 700 stations with their minute data and QC files, and the grid files of the 13
// five-minute times 2024-07-15 09:00 .. 10:00. Needs gmt and its GSHHG data (gmt-gshhg-low).
//
//   rdr_sample_data                      the whole tree
//   rdr_sample_data --time 202407150930  the same, but only that time's grid and the station
//                                        minutes it reads (one of the 13 times)
//
// Exit status 0 when every file was written, 1 when something could not be made, 2 on usage.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "rdr_paths.h"
#include "rdr_writers.h"
#include "sample_maps.h"
#include "sample_minutes.h"
#include "sample_terrain.h"
#include "sample_weather.h"
#include "seq_time.h"

namespace {

constexpr int kTimes = 13, kStepMinutes = 5;
// The station values of a picture come from 9 minutes before to 5 minutes after it.
constexpr int kMinutesBefore = 9, kMinutesAfter = 5;

class Stopwatch {
public:
    void lap(const char *what)
    {
        auto now = std::chrono::steady_clock::now();
        std::printf("  %-34s %6.1f s\n", what, std::chrono::duration<double>(now - last_).count());
        std::fflush(stdout);
        last_ = now;
    }

private:
    std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
};

// Minutes after 09:00 of the requested time, or -1 when it is not one of the sample's times.
int minute_of_time_text(const char *text)
{
    int YY, MM, DD, HH, MI;
    if (std::strlen(text) != 12 || std::sscanf(text, "%4d%2d%2d%2d%2d", &YY, &MM, &DD, &HH, &MI) != 5) return -1;
    int minute = time2seq(YY, MM, DD, HH, MI, 'm') - sample::sample_start_seq();
    return minute >= 0 && minute < kTimes * kStepMinutes && minute % kStepMinutes == 0 ? minute : -1;
}

// Writes the grid files of the given minutes, two at a time.
bool write_grids(const sample::Weather &weather, const std::vector<int> &minutes)
{
    std::vector<char> ok(minutes.size(), 0);
    auto work = [&](std::size_t first) {
        for (std::size_t k = first; k < minutes.size(); k += 2) {
            int t[5];
            seq2time(sample::sample_start_seq() + minutes[k], &t[0], &t[1], &t[2], &t[3], &t[4], 'm', 'n');
            ok[k] = fixture::write_grid(sample::grid_at(weather, minutes[k]), t[0], t[1], t[2], t[3], t[4], 6);
        }
    };
    std::thread second(work, 1);
    work(0);
    second.join();
    for (char done : ok)
        if (!done) return false;
    return true;
}

int fail(const std::string &why)
{
    std::fprintf(stderr, "rdr_sample_data: %s\n", why.c_str());
    return 1;
}

}  // namespace

int main(int argc, char **argv)
{
    std::vector<int> minutes;
    if (argc == 3 && std::strcmp(argv[1], "--time") == 0 && minute_of_time_text(argv[2]) >= 0) {
        minutes.push_back(minute_of_time_text(argv[2]));
    } else if (argc == 1) {
        for (int k = 0; k < kTimes; k++) minutes.push_back(k * kStepMinutes);
    } else {
        std::fprintf(stderr, "usage: rdr_sample_data [--time YYYYMMDDHHMI]  (a time from 202407150900 to "
                             "202407151000, every 5 minutes)\n");
        return 2;
    }
    std::printf("writing the sample tree under %s\n", rdr_root());
    Stopwatch watch;
    std::string error;
    sample::Geography geo;
    if (!sample::load_geography(&geo, &error)) return fail(error);
    watch.lap("coastlines and land (gmt)");

    sample::KmField terrain = sample::make_terrain(geo);
    if (!sample::write_sample_terrain(terrain)) return fail("cannot write the terrain file");
    if (!sample::write_sample_catalogue() || !sample::write_sample_colours() || !sample::write_sample_outlines(geo))
        return fail("cannot write the map catalogue, colour or outline files");
    if (!fixture::write_font()) return fail(std::string("cannot copy ") + fixture::kKoreanFont + " (apt-get install fonts-baekmuk)");
    watch.lap("terrain, maps, colours, outlines");

    std::vector<sample::SampleStation> stations = sample::place_stations(geo, terrain);
    if (!sample::write_station_catalogues(stations)) return fail("cannot write the station catalogues");
    sample::Weather weather = sample::make_weather(geo, terrain, stations);
    if (!sample::write_station_minutes(weather, stations, minutes.front() - kMinutesBefore,
                                       minutes.back() + kMinutesAfter))
        return fail("cannot write the station minute files");
    watch.lap("stations and their minutes");

    if (!write_grids(weather, minutes)) return fail("cannot write the grid files");
    watch.lap("grid files");
    std::printf("%zu stations listed, %zu grid files written\n", stations.size(), minutes.size());
    return 0;
}
