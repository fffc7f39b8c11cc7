// Writes the seed corpus of every fuzz target: rdr_fuzz_seeds DIR writes DIR/<target>/seed-NN.
// Each seed is the target's choice bytes followed by a well-formed file (or query), so that the
// fuzzer starts from inputs that reach every reader's main path.
#include <cstdio>
#include <string>
#include <vector>

#include "fuzz_tree.h"
#include "picture_writers.h"
#include "rdr_writers.h"
#include "station_writers.h"

namespace {

std::string bytes(std::initializer_list<int> choices)
{
    std::string out;
    for (int c : choices) out += (char)c;
    return out;
}

void write_seeds(const std::string &dir, const std::string &target, const std::vector<std::string> &seeds)
{
    for (std::size_t k = 0; k < seeds.size(); k++) {
        char name[32];
        std::snprintf(name, sizeof name, "/seed-%02zu", k);
        fuzz::put_file(dir + "/" + target + name, seeds[k]);
    }
}

std::vector<std::string> query_seeds()
{
    std::vector<std::string> seeds = {
        "obs=RNSN&map=HR&tm=202401151205&size=600&legend=1&gis=T&aws=1&zoom_level=1&zoom_rate=2&zoom_x=5000000&zoom_y=5000000",
        "obs=HSR&tm=202401151207&size=300&aws=8&zoom_level=3&zoom_x=2300000&zoom_y=2300000&griddisp=1&rnexdisp=2&x1=10&y1=20&x2=80&y2=90",
        "obs=TW&tm=2024011512&size=100&legend=0&gis=ST&zoom_level=2&zoom_rate=3&zoom_x=55&zoom_y=55",
        "obs=RNEX&tm=202401151205&size=50&aws=2&zoom_level=2&map=SR",
        "obs=AREA&tm=202401151205&size=250&cmp=HSO&qcd=Q&map=A/B&aws=6&zoom_level=1",
        "a=b=c&&=&obs=&legend=0&legend=1&auto_man=abc&dir=1&sms=2&color=x",
        "",
        std::string(1, '\0'),
    };
    for (const char *obs : {"RNSN1", "RNSN2", "RN15X", "TW"})
        seeds.push_back(std::string("obs=") + obs + "&tm=202401151205&size=200&aws=9&zoom_level=3");
    return seeds;
}

std::vector<std::string> probe_query_seeds()
{
    return {"x=2.55&y=40&tm=202401151205", "lon=125.5&lat=37.6&tm=202401151214&map=HR",
            "x1=10&y1=20&x2=90&y2=110&n=50&tm=202401151205", "x1=-5&y1=0.5&x2=1e3&y2=7&n=99999",
            "x=3&y=4&x1=1&lon=nan", "", std::string(1, '\0')};
}

fixture::Grid small_grid(int map_code, int dxy)
{
    fixture::Grid g = fixture::make_grid(12, 14, dxy, map_code);
    for (int j = 0; j < 14; j++)
        for (int i = 0; i < 12; i++) {
            std::size_t k = g.at(i, j);
            g.code[k] = (uint8_t)((i % 5) | ((j % 5) << 4));
            g.area[k] = (uint8_t)(j % 5);
            g.tw[k] = fixture::tw_raw(-3.0 + i);
            g.hsr[k] = fixture::rain_raw(0.4 * j);
            g.rn15x[k] = (int16_t)(i == j ? -30000 : 37 * i);
        }
    return g;
}

// Choices: product, view, how (0 as is, 1 compressed, 2 cut), cut.
std::vector<std::string> grid_seeds()
{
    std::string content = fixture::encode_grid(small_grid(0, 1000));
    std::vector<std::string> seeds;
    for (int product = 0; product < 10; product++) seeds.push_back(bytes({product, product % 5, 1, 0}) + content);
    seeds.push_back(bytes({6, 1, 0, 0}) + fuzz::gzip_bytes(content));
    seeds.push_back(bytes({0, 2, 2, 128}) + content);
    seeds.push_back(bytes({5, 3, 1, 0}) + fixture::encode_grid(small_grid(1, 500)));
    seeds.push_back(bytes({3, 4, 1, 0}) + fixture::encode_grid(small_grid(3, 2000)));
    return seeds;
}

std::vector<std::string> catalogue_seeds()
{
    const std::string standard = "# code:nx:ny:sx:sy\nHR:100:120:50:60\nSR:60:60:30:30\nA/B:100:120:50:60\n";
    std::vector<std::string> seeds;
    for (int q = 0; q < 6; q++) seeds.push_back(bytes({q}) + standard);
    for (const char *text : {"HR:1000:1200:500:600\r\n", "#HR:1:1:1:1\nHR: 100: 120:50:60:extra\nHR:5:5:0:0\n",
                             "HR:-100:120:50:60\n", "HR:0:0:0:0\n", "HR:99999999999:1:1:1\n", "HR\nHR:\nHR:7"})
        seeds.push_back(bytes({0}) + text);
    return seeds;
}

std::vector<std::string> colour_seeds()
{
    std::string rain = fixture::encode_color_classes(fixture::rain_classes());
    std::string temp = fixture::encode_color_classes(fixture::temperature_classes());
    std::vector<std::string> seeds;
    for (int r = 0; r < 3; r++) seeds.push_back(bytes({r}) + rain);
    for (int r = 3; r < 5; r++) seeds.push_back(bytes({r}) + temp);
    seeds.push_back(bytes({0}) + "255 255 255 0.5\n");
    seeds.push_back(bytes({1}) + "1 2 3\n# comment\n300 -5 9 1e30\n\n0 0 0 nan\n4 5 6 7.5 extra\n");
    return seeds;
}

std::vector<std::string> outline_seeds()
{
    std::string text = fixture::encode_outlines(
        {{{5, 5}, {50, 30}, {95, 10}, {90, 115}, {10, 100}, {5, 5}}, {{40, 40}}, {}, {{0, 60}, {100, 60}}});
    std::vector<std::string> seeds;
    for (int kind = 0; kind < 2; kind++)
        for (int q = 0; q < 4; q++) seeds.push_back(bytes({kind, q}) + text);
    seeds.push_back(bytes({0, 0}) + "2 0\n1e30 -1e30\nnan inf\n3 1\n1 1\n2 2\n");
    return seeds;
}

std::vector<std::string> station_seeds()
{
    std::vector<fixture::StationListRow> list;
    std::vector<fixture::SensorRow> sensors;
    std::vector<fixture::PositionRow> positions;
    for (int k = 0; k < 6; k++) {
        int id = fuzz::STATION_IDS[k];
        fixture::StationListRow row;
        row.stn_id = id;
        if (k == 3) row.kind = "SZ";
        if (k == 4) row.gov = "KMA";
        list.push_back(row);
        sensors.push_back({id});
        fixture::PositionRow p;
        p.stn_id = id;
        fixture::lonlat_of_km(10.0f + 15 * k, 12.0f + 17 * k, fuzz::MAP_SX, fuzz::MAP_SY, &p.lon, &p.lat);
        positions.push_back(p);
    }
    std::string text = fixture::lines_of(list, fixture::station_list_line) + "\x1e" +
                       fixture::lines_of(sensors, fixture::sensor_line) + "\x1e" +
                       fixture::lines_of(positions, fixture::position_line);
    std::vector<std::string> seeds;
    for (int mode = 0; mode < 12; mode += 2) seeds.push_back(bytes({mode, mode % 4}) + text);
    seeds.push_back(bytes({0, 0}) + "STN,END,START,NAME\n\x1e\x1e");
    return seeds;
}

// Choices: minute, mode, data length (high, low byte); then data records, then QC records.
std::vector<std::string> minute_seeds()
{
    std::string records, qc;
    for (int id = 0; id < 6; id++) {
        AWS3_DATA r = fixture::minute_record(id, fuzz::YY, fuzz::MM, fuzz::DD, fuzz::HH, 7);
        r.d[7] = (int16_t)(id % 2);
        r.d[65] = (int16_t)(600 * id);
        r.d[66] = (int16_t)(25 * id);
        r.d[67] = (int16_t)(10 * id - 5);
        r.d[68] = (int16_t)(100 + id);
        r.d[69] = (int16_t)(id * 33);
        records.append((const char *)&r, sizeof r);
        struct AWS3_QCD q {};
        q.aws_id = (int16_t)id;
        q.qc[id + 1] = 1u << 7;
        qc.append((const char *)&q, sizeof q);
    }
    int len = (int)records.size();
    std::vector<std::string> seeds;
    const int modes = 8;
    for (int minute : {0, 5, 7, 30, 59}) seeds.push_back(bytes({minute, minute % modes, len / 256, len % 256}) + records + qc);
    seeds.push_back(bytes({7, 2, 0, 100}) + records.substr(0, 100));
    return seeds;
}

std::vector<std::string> euckr_seeds()
{
    return {"\xbc\xad\xbf\xef", "AWS RDR", "\xbd\xc7\xc8\xb2 \xb7\xb9\xc0\xcc\xb4\xf5",
            "AWS \xb0\xad\xbc\xf6(15\xba\xd0)*4", std::string(40, '\xb0'), "ab\xb0", "\xff\xfe\x80\x41", ""};
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: rdr_fuzz_seeds DIR\n");
        return 2;
    }
    std::string dir = argv[1];
    write_seeds(dir, "query", query_seeds());
    write_seeds(dir, "probe_query", probe_query_seeds());
    write_seeds(dir, "grid_file", grid_seeds());
    write_seeds(dir, "map_catalogue", catalogue_seeds());
    write_seeds(dir, "color_file", colour_seeds());
    write_seeds(dir, "outline", outline_seeds());
    write_seeds(dir, "stations", station_seeds());
    write_seeds(dir, "minute_files", minute_seeds());
    write_seeds(dir, "euckr", euckr_seeds());
    return 0;
}
