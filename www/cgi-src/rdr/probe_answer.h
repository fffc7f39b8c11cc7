// The probe's answer, one JSON object: the data time, the time asked for, the grid file and the
// map, then the point with its nearest station or the line with its samples; each sample's cell,
// its two codes, its area and the class and value of every product of the product table. Or an
// object with an error text and what is known of the request.
#ifndef PROBE_ANSWER_H
#define PROBE_ANSWER_H

#include <string>
#include <vector>

#include "probe_cells.h"
#include "probe_query.h"
#include "probe_station.h"

// `cells` holds the cell contents of `samples`, one for one; `station` is null when there is none.
std::string probe_answer(const PROBE_QUERY &q, const std::vector<PROBE_SAMPLE> &samples,
                         const std::vector<CELL_RAW> &cells, const PROBE_STATION *station);

// What an error answer names beside its text: nothing (no query string), the time asked for and
// the map, or these and the grid file found.
enum class Known { Nothing, Asked, File };
std::string probe_error(const std::string &why, Known known);

#endif
