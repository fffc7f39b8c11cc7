// The sample tree of 09:30 as the demo shows it: the generator writes it into the test root and
// the real program draws every product, the terrain and the stations from it.
#include <gtest/gtest.h>

#include <cstdlib>

#include "fixture_tree.h"
#include "picture_table.h"

namespace {

using namespace table;

void sample_tree()
{
    fixture::reset_root();
    std::string command = std::string(RDR_SAMPLE_GENERATOR) + " --time 202407150930 > /dev/null";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

TEST(SampleTree, EveryProductTerrainAndStationsAreDrawn)
{
    const std::string q = "tm=202407150930&size=600&obs=";
    const uint32_t rain = rgb(51, 102, 255), snow = rgb(255, 102, 255), terrain = rgb(170, 170, 170);
    // The 1152 x 1440 km map at 600 pixels is 635 x 770: rain and snow, terrain, stations with
    // rain; every product paints some of the map (the station rain only South Korea's land) in
    // most of its classes.
    std::vector<Row> rows = {
        {"RNSN", sample_tree, q + "RNSN", picture(635, 770), {count(0, 21, 599, 769, rain, 5000, 400000), count(0, 21, 599, 769, snow, 100, 400000)}},
        {"terrain under the dry class", sample_tree, q + "RNSN&gis=T", picture(635, 770), {count(0, 21, 599, 769, terrain, 2000, 400000)}},
        {"stations of the capital region", sample_tree, "tm=202407150930&size=800&obs=HSR&map=CR&aws=8&zoom_level=3", picture(),
         {count(0, 21, 799, 799, kDisc, 500, 400000), count(0, 21, 799, 799, kBlue, 100, 400000)}},
    };
    for (const char *obs : {"RNSN1", "RNSN2", "RNEX", "AREA", "TW", "HSR", "RN15X"})
        rows.push_back({obs, sample_tree, q + obs, picture(635, 770), {count(0, 21, 599, 769, kBackground, 0, 600 * 750 * 95 / 100), distinct(obs[0] == 'R' || obs[0] == 'A' ? 4 : 12)}});
    run_rows(rows);
}

}  // namespace
