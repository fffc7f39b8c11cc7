// The map catalogue: a map code to its extent (nx, ny km) and projection origin (sx, sy km).
// Returns 0; an unknown code leaves the outputs as they were. A missing catalogue ends the
// process with status 255, since no picture can be placed without it.
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "cgiutil.h"
#include "file_ptr.h"
#include "rdr_sfc_pty_img.h"

namespace {

constexpr int LINE_CAP = 1024;
constexpr int CODE_CAP = 8;
constexpr int NUMBER_CAP = 16;

}  // namespace

int grid_map_inf(const char *map, int *nx, int *ny, int *sx, int *sy)
{
    char path[RDR_PATH_CAP];
    FilePtr fp = open_file(map_catalogue_path(path, sizeof path), path, "r");
    if (!fp) std::exit(255);

    char line[LINE_CAP];
    char code[CODE_CAP];
    char number[NUMBER_CAP];
    while (std::fgets(line, sizeof line, fp.get())) {
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
