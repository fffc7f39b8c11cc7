// Runs gmt in a scratch folder of its own (it leaves history files behind) and turns its text
// and byte output into polylines and the land mask of the domain's 1 km points.
#include "sample_geo.h"

#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "station_writers.h"

namespace sample {

namespace {

// A region that holds the whole domain (118.8..133.6 E, 30.1..43.4 N) with a margin.
const char *const kRegion = "-R118/135/29.5/44.5";
constexpr double kMaskWest = 118.0, kMaskNorth = 44.5, kMaskStep = 0.01;
constexpr int kMaskCols = 1700, kMaskRows = 1500;

class ScratchDir {
public:
    ScratchDir()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "rdr-sample-gmt.XXXXXX").string();
        if (mkdtemp(pattern.data())) path_ = pattern;
    }
    ~ScratchDir()
    {
        std::error_code ec;
        if (!path_.empty()) std::filesystem::remove_all(path_, ec);
    }
    const std::string &path() const { return path_; }

private:
    std::string path_;
};

std::string quoted(const std::string &s)
{
    std::string out = "'";
    for (char c : s) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

// Runs "gmt ARGS" in the scratch folder and reads the file `out_name` it leaves there; standard
// output goes to "gmt.out".
bool run_gmt(const ScratchDir &dir, const std::string &args, const std::string &out_name, std::string *bytes,
             std::string *error)
{
    std::string command = "cd " + quoted(dir.path()) + " && gmt " + args + " > gmt.out 2> gmt.err";
    if (std::system(command.c_str()) != 0) {
        std::ifstream err(dir.path() + "/gmt.err");
        std::stringstream text;
        text << err.rdbuf();
        *error = "gmt " + args + " failed: " + text.str();
        return false;
    }
    std::ifstream in(dir.path() + "/" + out_name, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    *bytes = text.str();
    return true;
}

// gmt's multi-segment text: a line starting with '>' begins a segment, others hold "lon lat".
std::vector<GeoLine> parse_segments(const std::string &text)
{
    std::vector<GeoLine> lines;
    std::istringstream in(text);
    std::string row;
    while (std::getline(in, row)) {
        if (row.empty()) continue;
        if (row[0] == '>') {
            lines.emplace_back();
            continue;
        }
        LonLat p{};
        if (std::sscanf(row.c_str(), "%lf %lf", &p.lon, &p.lat) != 2) continue;
        if (lines.empty()) lines.emplace_back();
        lines.back().push_back(p);
    }
    return lines;
}

bool mask_is_land(const std::string &mask, double lon, double lat)
{
    double c = (lon - kMaskWest) / kMaskStep, r = (kMaskNorth - lat) / kMaskStep;
    if (!(c >= 0 && c < kMaskCols && r >= 0 && r < kMaskRows)) return false;
    return mask[(std::size_t)r * kMaskCols + (std::size_t)c] != 0;
}

void fill_points(Geography *geo, const std::string &mask)
{
    geo->land = KmField(TOPO_COLS, TOPO_ROWS);
    geo->lon = KmField(TOPO_COLS, TOPO_ROWS);
    geo->lat = KmField(TOPO_COLS, TOPO_ROWS);
    fixture::KmProjection projection(DOMAIN_SX, DOMAIN_SY);
    for (int r = 0; r < TOPO_ROWS; r++) {
        for (int c = 0; c < TOPO_COLS; c++) {
            double lon = 0, lat = 0;
            projection.lonlat_of_km((float)c, (float)r, &lon, &lat);
            geo->lon.at(c, r) = (float)lon;
            geo->lat.at(c, r) = (float)lat;
            geo->land.at(c, r) = mask_is_land(mask, lon, lat) ? 1.0f : 0.0f;
        }
    }
}

}  // namespace

bool load_geography(Geography *geo, std::string *error)
{
    if (std::system("command -v gmt >/dev/null 2>&1") != 0) {
        *error = "gmt is not installed (apt-get install gmt gmt-gshhg-low)";
        return false;
    }
    ScratchDir dir;
    if (dir.path().empty()) {
        *error = "cannot make a scratch folder for gmt";
        return false;
    }
    std::string region = kRegion, coast, borders, rivers, mask;
    // -A0/0/1: only the shorelines between land and sea, not those of lakes.
    bool ok = run_gmt(dir, "coast " + region + " -Di -A0/0/1 -W -M", "gmt.out", &coast, error) &&
              run_gmt(dir, "coast " + region + " -Di -N1 -M", "gmt.out", &borders, error) &&
              run_gmt(dir, "coast " + region + " -Di -I1 -M", "gmt.out", &rivers, error) &&
              run_gmt(dir, "grdlandmask " + region + " -I0.01 -r -Di -N0/1/0/1/0 -Gmask.nc", "mask.nc", &mask, error) &&
              run_gmt(dir, "grd2xyz mask.nc -ZTLu", "gmt.out", &mask, error);
    if (!ok) return false;
    if (mask.size() != (std::size_t)kMaskCols * kMaskRows) {
        *error = "gmt's land mask has " + std::to_string(mask.size()) + " bytes";
        return false;
    }
    geo->coast = parse_segments(coast);
    geo->borders = parse_segments(borders);
    geo->rivers = parse_segments(rivers);
    fill_points(geo, mask);
    return true;
}

bool in_south_korea(double lon, double lat)
{
    // The demarcation line from the Han estuary to the east coast, west to east.
    static const LonLat kLine[] = {{124.0, 37.80},  {126.24, 37.82}, {126.66, 37.78}, {126.81, 38.00},
                                   {126.95, 38.14}, {127.22, 38.32}, {127.57, 38.32}, {128.00, 38.31},
                                   {128.14, 38.33}, {128.36, 38.62}, {131.50, 38.62}};
    if (lon < 124.5 || lon > 131.0 || lat < 33.0) return false;
    bool tsushima = lon > 129.1 && lon < 129.55 && lat > 34.05 && lat < 34.75;
    bool kyushu = lon > 129.6 && lat < 35.3;
    if (tsushima || kyushu) return false;
    for (std::size_t k = 1; k < sizeof kLine / sizeof kLine[0]; k++) {
        if (lon > kLine[k].lon) continue;
        const LonLat &a = kLine[k - 1], &b = kLine[k];
        double limit = a.lat + (b.lat - a.lat) * (lon - a.lon) / (b.lon - a.lon);
        return lat < limit;
    }
    return false;
}

}  // namespace sample
