// The map catalogue; see grid_map_inf.h.
#include "grid_map_inf.h"

#include <cstring>
#include <initializer_list>

#include "cgiutil.h"
#include "file_ptr.h"
#include "rdr_paths.h"

namespace {

constexpr int LINE_CAP = 1024;
constexpr int CODE_CAP = 8;
constexpr int NUMBER_CAP = 16;

}  // namespace

int grid_map_inf(const char *map, int *nx, int *ny, int *sx, int *sy)
{
    char path[RDR_PATH_CAP];
    FilePtr fp = open_file(map_catalogue_path(path, sizeof path), path, "r");
    if (!fp) return MAP_NO_CATALOGUE;

    // A line cut at the buffer still counts for the fields it holds.
    char line[LINE_CAP];
    char code[CODE_CAP];
    char number[NUMBER_CAP];
    while (read_line(fp.get(), line, sizeof line) != LineRead::End) {
        if (line[0] == '#') continue;
        getword(code, sizeof code, line, ':');
        if (std::strcmp(code, map) != 0) continue;
        for (int *out : {nx, ny, sx, sy}) {
            getword(number, sizeof number, line, ':');
            *out = read_int(number);
        }
        break;
    }
    return 0;
}
