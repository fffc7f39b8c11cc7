// Every fixed path of the system, composed in this one place with the build-time root.
// Each composer fills `out` and returns 0, or returns -1 when the path would not fit in `cap`;
// a path that does not fit is a file that does not exist, never a cut name.
#ifndef RDR_PATHS_H
#define RDR_PATHS_H

#include <cstddef>

// Capacity that every path buffer of the system uses.
constexpr std::size_t RDR_PATH_CAP = 512;

const char *rdr_root();

int grid_file_path(char *out, std::size_t cap, int YY, int MM, int DD, int HH, int MI);
int map_catalogue_path(char *out, std::size_t cap);
int color_file_path(char *out, std::size_t cap, const char *file_name);
int topo_file_path(char *out, std::size_t cap);
int outline_file_path(char *out, std::size_t cap, const char *map, int kind);
int aws3_min_path(char *out, std::size_t cap, int YY, int MM, int DD, int HH);
int aws3_qcd_path(char *out, std::size_t cap, int YY, int MM, int DD, int HH);
int stn_obs_path(char *out, std::size_t cap);
int stn_sensor_path(char *out, std::size_t cap);
int stn_loc_path(char *out, std::size_t cap);

// The Korean TrueType font; empty when the root makes the path too long.
const char *font_path();

#endif
