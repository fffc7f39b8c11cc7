// Synthetic terrain over the real land: plausibly shaped (ranges along the east coast, plains in
// the west, high plateaus in the north, volcano peaks) but not measured. Heights in metres on
// the domain's 1 km points, 0 over water; write_sample_terrain returns false when it cannot write.
#ifndef SAMPLE_TERRAIN_H
#define SAMPLE_TERRAIN_H

#include "sample_geo.h"

namespace sample {

KmField make_terrain(const Geography &geo);
bool write_sample_terrain(const KmField &heights);

}  // namespace sample

#endif
