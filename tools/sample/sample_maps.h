// The sample tree's reference files: the map catalogue (the whole domain and three smaller
// areas), the two colour files, the outline files of every map from the real coastlines,
// borders and rivers, and the Korean font. Writers return false when a file cannot be written.
#ifndef SAMPLE_MAPS_H
#define SAMPLE_MAPS_H

#include <string>
#include <vector>

#include "sample_geo.h"

namespace sample {

// A map area by its south-west corner and size, km of the whole domain.
struct SampleMap {
    const char *code;
    int x0, y0, nx, ny;
    int sx() const { return DOMAIN_SX - x0; }
    int sy() const { return DOMAIN_SY - y0; }
};
const std::vector<SampleMap> &sample_maps();

bool write_sample_catalogue();
bool write_sample_colours();
// Kind 4: coastlines; kind 1: national borders and major rivers.
bool write_sample_outlines(const Geography &geo);

}  // namespace sample

#endif
