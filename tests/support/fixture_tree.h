// The fixture tree under the test build's root: wiped and filled per test.
#ifndef FIXTURE_TREE_H
#define FIXTURE_TREE_H

#include <string>

#include "rdr_writers.h"

namespace fixture {

// Empties the root (refusing anything that does not look like a scratch root).
void reset_root();

// Places the Korean TrueType font at the font path under the root.
void install_font();

// A catalogue with the map "HR" of nx x ny km and origin (sx, sy).
void write_simple_catalogue(int nx = 100, int ny = 120, int sx = 50, int sy = 60);

}  // namespace fixture

#endif
