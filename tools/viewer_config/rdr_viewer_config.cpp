// The viewer page's configuration, printed as JSON from the program's own rooms, so that the page
// never keeps a second copy of a table: the products with their titles, units and colours (the
// palette color_table allocates, thresholds by month where they slide), the zoom rules, the
// canvas constants, the data-time search, the projection and the maps of the catalogue, and the
// times whose grid file the program would take.
//   rdr_viewer_config [--refresh SECONDS] [YYYYMMDDHHMI...]   the JSON; candidate times as arguments
//   rdr_viewer_config --project SX SY                         "lon lat" lines in, "x y" km out
#include <gd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "cgiutil.h"
#include "color_table.h"
#include "file_ptr.h"
#include "grid_map_inf.h"
#include "korean_text.h"
#include "lamcproj.h"
#include "product_table.h"
#include "rdr_paths.h"
#include "seq_time.h"
#include "user_input.h"
#include "view.h"

namespace {

const char *const kCgi = "/cgi-bin/rdr_sfc_pty_img";
constexpr int MONTHS = 12;
constexpr int HIGHEST_RATE = 9;  // the rates looked at for a zoom rule of their own

std::string quoted(const std::string &text)
{
    std::string out = "\"";
    for (unsigned char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += (char)c;
        } else if (c < 0x20) {
            char esc[8];
            std::snprintf(esc, sizeof esc, "\\u%04x", c);
            out += esc;
        } else {
            out += (char)c;
        }
    }
    return out + "\"";
}

std::string number(double v)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g", v);
    return text;
}

template <typename T, typename Format>
std::string joined(const std::vector<T> &items, Format format, const char *separator = ", ")
{
    std::string out;
    for (std::size_t k = 0; k < items.size(); k++) out += (k ? separator : "") + format(items[k]);
    return out;
}

template <typename T, typename Format>
std::string list(const std::vector<T> &items, Format format, const char *separator = ", ")
{
    return "[" + joined(items, format, separator) + "]";
}

std::string rgb(gdImagePtr im, int entry)
{
    return "[" + std::to_string(gdImageRed(im, entry)) + ", " + std::to_string(gdImageGreen(im, entry)) + ", " +
           std::to_string(gdImageBlue(im, entry)) + "]";
}

// The palette of one picture of the current product in `month`, as color_table makes it.
struct Palette {
    gdImagePtr im = gdImageCreate(1, 1);
    int color_lvl[COLOR_SLOTS] = {};
    float data_lvl[COLOR_SLOTS] = {};

    explicit Palette(int month)
    {
        var.seq = time2seq(2024, month, 15, 0, 0, 'm');
        color_table(im, color_lvl, data_lvl);
    }
    ~Palette() { gdImageDestroy(im); }
    Palette(const Palette &) = delete;
    Palette &operator=(const Palette &) = delete;

    std::string slot(int s) const { return rgb(im, color_lvl[s]); }
    std::vector<double> bounds() const { return std::vector<double>(data_lvl, data_lvl + var.num_color); }
};

struct ClassRow {
    int code;
    const char *name;
    int color;
};

template <typename Row, typename Fields>
std::string classes(const Palette &palette, const Row (&table)[CLASS_ROWS], Fields fields)
{
    std::vector<ClassRow> rows;
    for (const Row &row : table) rows.push_back(fields(row));
    return list(rows, [&](const ClassRow &row) {
        return "{\"code\": " + std::to_string(row.code) + ", \"name\": " + quoted(euckr_to_utf8(row.name)) +
               ", \"rgb\": " + rgb(palette.im, row.color) + "}";
    }, ",\n      ");
}

std::string product_json(const PRODUCT &p)
{
    product = &p;
    Palette palette(1);
    // A unit of one blank is the legend's way of showing none.
    std::string unit = p.unit[0] == ' ' ? "" : p.unit;
    std::string out = "{\"code\": " + quoted(p.code) + ", \"title\": " + quoted(euckr_to_utf8(p.title)) +
                      ", \"unit\": " + quoted(unit) + ",\n     ";
    if (p.kind == ProductKind::Classes) {
        out += "\"classes\": ";
        out += p.table == ClassTable::RNEX
                   ? classes(palette, rnex_color, [](const RNEX_COLOR &r) { return ClassRow{r.rnex, r.rnex_ko, r.color}; })
                   : classes(palette, rnsn_color, [](const RNSN_COLOR &r) { return ClassRow{r.rnsn, r.rnsn_ko, r.color}; });
        return out + "}";
    }
    std::vector<int> levels;
    for (int k = 0; k < var.num_color; k++) levels.push_back(k);
    out += "\"colors\": " + list(levels, [&](int k) { return palette.slot(k); }) + ",\n     ";
    // The page asks with the default marking: light rain in the second class's colour.
    if (p.marking != ClassRule::None) out += "\"markingClass\": " + std::to_string(SECOND_CLASS) + ", ";
    if (!p.monthly_shift) return out + "\"bounds\": " + list(palette.bounds(), number) + "}";
    std::vector<std::vector<double>> months;
    for (int m = 1; m <= MONTHS; m++) months.push_back(Palette(m).bounds());
    return out + "\"boundsByMonth\": [\n      " +
           joined(months, [](const std::vector<double> &b) { return list(b, number); }, ",\n      ") + "]}";
}

// Every named slot a layer draws with outside the classes, and the terrain bands with their
// heights; a picture of any product has them.
std::string slots_json()
{
    product = &product_at(0);
    Palette p(1);
    std::vector<int> bands;
    for (int s = SLOT_TOPO_FIRST; s <= SLOT_TOPO_LAST; s++) bands.push_back(s);
    return "{\"background\": " + p.slot(SLOT_BACKGROUND) + ", \"white\": " + p.slot(SLOT_WHITE) +
           ", \"frame\": " + p.slot(SLOT_FRAME) + ", \"black\": " + p.slot(SLOT_BLACK) +
           ",\n    \"grey\": " + p.slot(SLOT_GREY) + ", \"disc\": " + p.slot(SLOT_DISC) +
           ", \"dry\": " + p.slot(SLOT_RED) + ", \"rain\": " + p.slot(SLOT_BLUE) +
           ", \"section\": " + p.slot(SLOT_SECTION) + ",\n    \"terrain\": " +
           list(bands, [&](int s) { return "{\"rgb\": " + p.slot(s) + ", \"below\": " + number(p.data_lvl[s]) + "}"; }) +
           "}";
}

std::string zoom_rule_json(ZoomRule r)
{
    return "{\"rate\": " + std::to_string(r.rate) + ", \"maxSteps\": " + std::to_string(r.max_steps) +
           ", \"divisor\": " + std::to_string(r.divisor) + "}";
}

std::string zoom_rules_json()
{
    std::string out = "{";
    for (int rate = 2; rate <= HIGHEST_RATE; rate++) {
        var.zoom_rate = rate;
        ZoomRule r = zoom_rule_of_request();
        if (r.max_steps > 0) out += (out.size() > 1 ? ", \"" : "\"") + std::to_string(rate) + "\": " + zoom_rule_json(r);
    }
    return out + "}";
}

// The codes of the catalogue, read with the program's line reader and split as it splits them;
// each code's numbers come from grid_map_inf, so a map is what the program makes of it.
std::string maps_json()
{
    char path[RDR_PATH_CAP];
    FilePtr fp = open_file(map_catalogue_path(path, sizeof path), path, "r");
    std::set<std::string> seen;
    std::string out;
    char line[1024];
    char code[sizeof var.map];
    while (fp && read_line(fp.get(), line, sizeof line) != LineRead::End) {
        if (line[0] == '#') continue;
        getword(code, sizeof code, line, ':');
        // The page puts the code into the query and the JSON as it stands.
        if (!code[0] || std::strspn(code, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_") !=
                            std::strlen(code) || !seen.insert(code).second)
            continue;
        var.NX = var.NY = var.SX = var.SY = 0;
        grid_map_inf(code, &var.NX, &var.NY, &var.SX, &var.SY);
        if (var.NX <= 0 || var.NY <= 0) continue;
        lamc_parameter m = map_projection();
        out += std::string(out.empty() ? "" : ",") + "\n    " + quoted(code) + ": {\"nx\": " + std::to_string(var.NX) +
               ", \"ny\": " + std::to_string(var.NY) + ", \"xo\": " + number(m.xo) + ", \"yo\": " + number(m.yo) + "}";
    }
    return "{" + out + "\n  }";
}

std::string projection_json()
{
    var.SX = var.SY = 0;
    lamc_parameter m = map_projection();
    return "{\"grid\": " + number(m.grid) + ", \"slat1\": " + number(m.slat1) + ", \"slat2\": " + number(m.slat2) +
           ", \"olon\": " + number(m.olon) + ", \"olat\": " + number(m.olat) + "}";
}

// The candidates whose grid file the program would take, by its own presence test.
std::vector<std::string> times_present(const std::vector<std::string> &candidates)
{
    std::vector<std::string> times;
    for (const std::string &tm : candidates) {
        if (tm.size() != 12 || tm.find_first_not_of("0123456789") != std::string::npos) continue;
        auto field = [&](int at, int len) { return std::atoi(tm.substr(at, len).c_str()); };
        var.seq = time2seq(field(0, 4), field(4, 2), field(6, 2), field(8, 2), field(10, 2), 'm');
        if (rdr_sfc_pty_file() == 0) times.push_back(tm);
    }
    return times;
}

int print_config(int refresh, const std::vector<std::string> &candidates)
{
    std::vector<int> products;
    for (int k = 0; k < product_count(); k++) products.push_back(k);
    TIME_SEARCH search = time_search();
    std::printf("{\n  \"cgi\": %s,\n  \"refresh\": %d,\n", quoted(kCgi).c_str(), refresh);
    std::printf("  \"titleHeight\": %d, \"legendWidth\": %d, \"canvasMax\": %lld,\n", TITLE_HEIGHT, LEGEND_WIDTH,
                CANVAS_MAX);
    std::printf("  \"search\": {\"candidates\": %d, \"stepMinutes\": %d},\n", search.candidates, search.step_min);
    std::printf("  \"zoomRules\": %s,\n  \"sectionRule\": %s,\n", zoom_rules_json().c_str(),
                zoom_rule_json(ZOOM_RULE_EIGHTHS).c_str());
    std::printf("  \"projection\": %s,\n  \"maps\": %s,\n", projection_json().c_str(), maps_json().c_str());
    std::printf("  \"slots\": %s,\n", slots_json().c_str());
    std::printf("  \"products\": [\n    %s\n  ],\n",
                joined(products, [](int k) { return product_json(product_at(k)); }, ",\n    ").c_str());
    std::string times = list(times_present(candidates), quoted);
    std::printf("  \"times\": %s\n}\n", times.c_str());
    return 0;
}

// Map km of the map whose projection origin is (sx, sy), by the program's own conversion.
int print_projected(int sx, int sy)
{
    var.SX = sx;
    var.SY = sy;
    lamc_parameter m = map_projection();
    float lon, lat, x, y;
    while (std::scanf("%f %f", &lon, &lat) == 2) {
        lamcproj_ellp(&lon, &lat, &x, &y, 0, &m);
        std::printf("%.4f %.4f\n", x, y);
    }
    return 0;
}

int usage()
{
    std::fprintf(stderr, "usage: rdr_viewer_config [--refresh SECONDS] [YYYYMMDDHHMI...]\n"
                         "       rdr_viewer_config --project SX SY < lon-lat-lines\n");
    return 2;
}

}  // namespace

int main(int argc, char **argv)
{
    std::vector<std::string> args(argv + 1, argv + argc);
    if (!args.empty() && args[0] == "--project")
        return args.size() == 3 ? print_projected(std::atoi(args[1].c_str()), std::atoi(args[2].c_str())) : usage();
    int refresh = 30;
    if (!args.empty() && args[0] == "--refresh") {
        if (args.size() < 2 || (refresh = std::atoi(args[1].c_str())) <= 0) return usage();
        args.erase(args.begin(), args.begin() + 2);
    }
    return print_config(refresh, args);
}
