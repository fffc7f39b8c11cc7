// The probe's entry: one request, one JSON answer of what the grid file holds at a point (with
// the nearest station) or along a line. It finds the data time and reads the map catalogue and
// the grid header as the picture does; every failure is an answer with an error text, status 200.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "probe_answer.h"
#include "probe_cells.h"
#include "probe_query.h"
#include "probe_station.h"
#include "rdr_sfc_pty_get.h"
#include "user_input.h"

namespace {

std::string answer_of_request()
{
    bool has_query = std::getenv("QUERY_STRING") != nullptr;
    int found = user_input();
    if (!has_query) return probe_error("no query string", Known::Nothing);
    PROBE_QUERY q;
    std::string why;
    if (probe_query(&q, &why) < 0) return probe_error(why, found == 0 ? Known::File : Known::Asked);
    if (found < 0) return probe_error("no grid file at the time asked for or in the 45 minutes before", Known::Asked);

    GRID_FILE file;
    int got = rdr_sfc_pty_open(&file);
    if (got == GRID_NO_CATALOGUE) return probe_error("the map catalogue is missing", Known::File);
    if (var.NX <= 0 || var.NY <= 0) return probe_error("the map code is not in the map catalogue", Known::File);
    if (got < 0 || rdr_cmp_head.nx <= 0 || rdr_cmp_head.ny <= 0)
        return probe_error("the grid file cannot be read, or its header gives no plausible grid", Known::File);

    std::vector<PROBE_SAMPLE> samples = probe_samples(q, rdr_cmp_head);
    std::vector<GRID_CELL> where;
    for (const PROBE_SAMPLE &s : samples) where.push_back(s.cell);
    std::vector<CELL_RAW> cells;
    probe_cells(file.stream.get(), rdr_cmp_head, where, &cells);
    file.stream.reset();

    PROBE_STATION station;
    bool near = q.shape == ProbeShape::Point && probe_station(samples[0].x, samples[0].y, var.seq, &station) == 0;
    return probe_answer(q, samples, cells, near ? &station : nullptr);
}

}  // namespace

int main()
{
    std::string body = answer_of_request();
    std::fputs("HTTP/1.0 200 OK\nContent-type: application/json\n\n", stdout);
    std::fwrite(body.data(), 1, body.size(), stdout);
    std::fflush(stdout);
    return 0;
}
