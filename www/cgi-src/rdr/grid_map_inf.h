// The map catalogue: a map code to its extent (nx, ny km) and projection origin (sx, sy km).
#ifndef GRID_MAP_INF_H
#define GRID_MAP_INF_H

// The catalogue file could not be opened: no picture can be placed without it.
constexpr int MAP_NO_CATALOGUE = -1;

// 0 after looking the code up (the first line whose code matches counts; an unknown code leaves
// the outputs as they were), or MAP_NO_CATALOGUE.
int grid_map_inf(const char *map, int *nx, int *ny, int *sx, int *sy);

#endif
