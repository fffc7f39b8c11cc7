// The fixture tree under the test build's root: wiped and filled per test.
#ifndef FIXTURE_TREE_H
#define FIXTURE_TREE_H

#include "rdr_writers.h"

namespace fixture {

// Empties the root (refusing anything that does not look like a scratch root).
void reset_root();

}  // namespace fixture

#endif
