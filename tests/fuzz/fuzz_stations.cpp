// Fuzz target: the three station catalogues. The first bytes choose the overlay mode and the
// view; the rest holds the station list, the sensor list and the position list, in that order,
// separated by the byte 0x1e. A list that the input does not reach is missing.
#include <cstdint>
#include <cstdio>
#include <string>

#include "fuzz_tree.h"
#include "rdr_paths.h"
#include "rdr_writers.h"

namespace {

const char *const kModes[] = {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "-1"};
const char *const kViews[] = {
    "&zoom_level=3",
    "&zoom_level=1",
    "&zoom_level=2&zoom_x=2000000&zoom_y=2000000",
    "&zoom_level=4&zoom_rate=3&zoom_x=22&zoom_y=22",
};
constexpr char SEPARATOR = '\x1e';

void put_or_remove(const std::string &path, const std::string &text, bool present)
{
    if (present)
        fuzz::put_file(path, text);
    else
        std::remove(path.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    fuzz::make_tree(fuzz::ALL_PARTS & ~fuzz::STATIONS);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size)
{
    fuzz::Choices c(data, size);
    std::string query = std::string("obs=RNSN&tm=") + fuzz::TM + "&size=200&aws=" + c.pick_of(kModes) + c.pick_of(kViews);
    std::string rest = c.rest();

    std::string (*const composers[])() = {
        [] { return fixture::path_of(stn_obs_path); },
        [] { return fixture::path_of(stn_sensor_path); },
        [] { return fixture::path_of(stn_loc_path); },
    };
    std::size_t start = 0;
    for (auto compose : composers) {
        bool present = start <= rest.size();
        std::size_t end = present ? rest.find(SEPARATOR, start) : std::string::npos;
        if (end == std::string::npos) end = rest.size();
        put_or_remove(compose(), present ? rest.substr(start, end - start) : std::string(), present);
        start = end + 1;
    }
    fuzz::run_program(query.c_str());
    return 0;
}
