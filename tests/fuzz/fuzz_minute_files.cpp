// Fuzz target: the hourly minute data and QC files. The first bytes choose the minute whose
// block the input fills, the overlay mode and the length of the data part; the rest is the data
// part (from the start of that minute's block of the data file, where stations 0..5 have their
// slots) followed by the QC part (likewise in the QC file). The files are sparse elsewhere, and
// the request's time puts that minute inside the stations' 15-minute window.
#include <cstdint>
#include <cstdio>
#include <string>

#include "aws3_io.h"
#include "file_ptr.h"
#include "fuzz_tree.h"
#include "rdr_paths.h"
#include "rdr_writers.h"

namespace {

const char *const kModes[] = {"1", "3", "4", "5", "8", "9", "10", "11"};

// The part at `offset` of an otherwise empty (sparse) file.
void put_at(const std::string &path, long long offset, const std::string &part)
{
    fuzz::put_file(path, std::string());
    FilePtr fp(std::fopen(path.c_str(), "r+b"));
    if (!fp || std::fseek(fp.get(), (long)offset, SEEK_SET) != 0) std::abort();
    std::fwrite(part.data(), 1, part.size(), fp.get());
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    fuzz::make_tree(fuzz::CATALOGUE | fuzz::GRIDS | fuzz::COLOURS);
    fuzz::write_hour_of_grids();
    fuzz::write_stations({0, 1, 2, 3, 4, 5});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size)
{
    fuzz::Choices c(data, size);
    int minute = c.pick(60);
    const char *mode = c.pick_of(kModes);
    std::size_t data_len = (std::size_t)c.pick(256) * 256 + (std::size_t)c.pick(256);
    std::string rest = c.rest();
    std::string data_part = rest.substr(0, data_len);
    std::string qc_part = data_len < rest.size() ? rest.substr(data_len) : std::string();

    put_at(fixture::path_of(aws3_min_path, fuzz::YY, fuzz::MM, fuzz::DD, fuzz::HH), minute * AWS3_DATA_BLOCK, data_part);
    put_at(fixture::path_of(aws3_qcd_path, fuzz::YY, fuzz::MM, fuzz::DD, fuzz::HH), minute * AWS3_QCD_BLOCK, qc_part);
    char query[160];
    std::snprintf(query, sizeof query, "obs=RNSN&tm=20240115%02d%02d&size=200&zoom_level=3&aws=%s", fuzz::HH,
                  minute / 5 * 5, mode);
    fuzz::run_program(query);
    return 0;
}
