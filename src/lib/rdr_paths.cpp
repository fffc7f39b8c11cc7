// The fixed paths of the system. RDR_ROOT comes from the build; nothing else spells a path.
#include "rdr_paths.h"

#include <cstdarg>
#include <cstdio>

#ifndef RDR_ROOT
#define RDR_ROOT ""
#endif

namespace {

__attribute__((format(printf, 3, 4))) int compose(char *out, std::size_t cap, const char *fmt, ...)
{
    if (cap == 0) return -1;
    int root_len = std::snprintf(out, cap, "%s", RDR_ROOT);
    if (root_len < 0 || (std::size_t)root_len >= cap) {
        out[0] = '\0';
        return -1;
    }
    va_list ap;
    va_start(ap, fmt);
    int n = std::vsnprintf(out + root_len, cap - root_len, fmt, ap);
    va_end(ap);
    if (n < 0 || (std::size_t)n >= cap - root_len) {
        out[0] = '\0';
        return -1;
    }
    return 0;
}

}  // namespace

const char *rdr_root() { return RDR_ROOT; }

int grid_file_path(char *out, std::size_t cap, int YY, int MM, int DD, int HH, int MI)
{
    return compose(out, cap, "%s/%04d%02d/%02d/RDR_SFC_PTY_%04d%02d%02d%02d%02d.bin.gz",
                   "/DATA/RDR/OBS", YY, MM, DD, YY, MM, DD, HH, MI);
}

int map_catalogue_path(char *out, std::size_t cap) { return compose(out, cap, "/rdr/REF/MAP/map.ini"); }

int color_file_path(char *out, std::size_t cap, const char *file_name)
{
    return compose(out, cap, "/rdr/REF/COLOR/%s", file_name);
}

int topo_file_path(char *out, std::size_t cap)
{
    return compose(out, cap, "/DATA/GIS/TOPO/SRTM/topo_mapB_1km.bin");
}

int outline_file_path(char *out, std::size_t cap, const char *map, int kind)
{
    return compose(out, cap, "%s/ZYR_%s_map%d.dat", "/DATA/GIS/MAP/dat", map, kind);
}

int aws3_min_path(char *out, std::size_t cap, int YY, int MM, int DD, int HH)
{
    return compose(out, cap, "%s/%04d%02d/%02d/AWS3_MIN_%04d%02d%02d%02d", "/D8W6_DATA/AWS/AWS3D",
                   YY, MM, DD, YY, MM, DD, HH);
}

int aws3_qcd_path(char *out, std::size_t cap, int YY, int MM, int DD, int HH)
{
    return compose(out, cap, "%s/%04d%02d/%02d/AWS3_QCD_%04d%02d%02d%02d", "/D8W6_DATA/AWS/AWS3D",
                   YY, MM, DD, YY, MM, DD, HH);
}

int stn_obs_path(char *out, std::size_t cap) { return compose(out, cap, "/D8W6_DATA/STN/stn_obs.csv"); }

int stn_sensor_path(char *out, std::size_t cap)
{
    return compose(out, cap, "/D8W6_DATA/STN/stn_obs_sensor.csv");
}

int stn_loc_path(char *out, std::size_t cap) { return compose(out, cap, "/D8W6_DATA/STN/stn_obs_loc.csv"); }

const char *font_path()
{
    static char path[RDR_PATH_CAP];
    static bool done = false;
    if (!done) {
        compose(path, sizeof path, "/usr/share/fonts/korean/TrueType/gulim.ttf");
        done = true;
    }
    return path;
}
