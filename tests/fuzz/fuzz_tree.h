// What every fuzz target shares: its own fixture tree under the fuzz build's root (each target has
// a root of its own, so two targets can run at once), the choices a target reads from the front
// of its input, and one run of the whole program in-process, as a fresh process would run it.
#ifndef FUZZ_TREE_H
#define FUZZ_TREE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// The programs' mains (the picture, the probe), compiled under these names for the fuzz targets.
int rdr_program_main();
int rdr_probe_main();

namespace fuzz {

// The data time of the tree: grid files at 12:00 and 12:05 of 2024-01-15, stations observed
// around it. The map "HR" is 100 x 120 km with its origin at (50, 60) km.
constexpr int YY = 2024, MM = 1, DD = 15, HH = 12, MI = 5;
constexpr const char *TM = "202401151205";
constexpr int MAP_NX = 100, MAP_NY = 120, MAP_SX = 50, MAP_SY = 60;

// The parts of the tree; a target leaves out the part it writes itself.
enum Part : unsigned {
    CATALOGUE = 1u << 0,
    GRIDS = 1u << 1,
    COLOURS = 1u << 2,
    OUTLINES = 1u << 3,
    TERRAIN = 1u << 4,
    STATIONS = 1u << 5,
    MINUTES = 1u << 6,
    ALL_PARTS = 0x7f,
};

// Wipes the target's root and writes the parts asked for, with the font; standard output goes
// to /dev/null and the clock's zone is UTC. Aborts when the tree cannot be written.
void make_tree(unsigned parts);

// The tree's stations (ids 95 .. 9999), or a list of the target's own, all inside the map.
extern const std::vector<int> STATION_IDS;
void write_stations(const std::vector<int> &ids);

// Grid files of every 5 minutes of hour 12 (the tree itself has 12:00 and 12:05 only).
void write_hour_of_grids();

// Writes a file of the tree, making its directories; aborts when it cannot.
void put_file(const std::string &path, const std::string &bytes);

// A gzip stream of `content`, as the producer of the grid files writes it.
std::string gzip_bytes(const std::string &content);

// Runs the program (or the probe) once with QUERY_STRING set to `query` (unset for nullptr) from the state a
// new process starts in, then frees the grids it allocated and closes the minute files it
// keeps open, so that iterations neither grow nor see each other.
void run_program(const char *query, int (*program_main)() = rdr_program_main);

// The choices a target makes, one byte each from the front of the input (a byte past the end
// reads as 0); the rest of the input is the content of the target's file.
class Choices {
public:
    Choices(const uint8_t *data, std::size_t size) : data_(data), size_(size) {}
    // A number in 0 .. count - 1.
    int pick(int count);
    template <typename T, std::size_t N>
    const T &pick_of(const T (&options)[N])
    {
        return options[pick((int)N)];
    }
    std::string rest() const;

private:
    const uint8_t *data_;
    std::size_t size_;
    std::size_t used_ = 0;
};

}  // namespace fuzz

#endif
