// The program and the viewer page as a web server serves them: tools/serve runs lighttpd with the
// project's configuration on a small fixture tree; curl fetches pictures, page and configuration;
// headless Chromium drives the page (and sees a new grid file join the times). A Ctrl-C or a TERM
// leaves no process and no scratch folder behind.
#include <signal.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "cgi_run.h"
#include "child.h"
#include "fixture_tree.h"
#include "picture_writers.h"
#include "rdr_paths.h"

namespace {

// Grid files 12:00 .. 12:30 on 2024-01-15 but 12:15, and at 12:35 a file too small to count; the
// map HR of 100 x 120 km with its origin at (50, 60) km.
void write_viewer_tree()
{
    fixture::reset_root();
    fixture::install_font();
    ASSERT_TRUE(fixture::write_map_catalogue({"# code:nx:ny:sx:sy", "HR:100:120:50:60", "EW:200:100:0:0",
                                              "HR:5:5:0:0", "x-y:10:10:0:0"}));
    ASSERT_TRUE(fixture::write_both_color_files());
    fixture::Grid g = fixture::patterned_grid(100, 120);
    for (int mi : {0, 5, 10, 20, 25, 30}) ASSERT_TRUE(fixture::write_grid(g, 2024, 1, 15, 12, mi));
    ASSERT_TRUE(fixture::write_bytes(fixture::grid_path(2024, 1, 15, 12, 35), std::string(100, 'x')));
}

struct HttpAnswer {
    int status = 0;
    std::string content_type;
    std::string body;
};

// A GET with curl, the client an operator would try first; status and type follow the body.
HttpAnswer http_get(const std::string &url)
{
    web::Child curl({"curl", "-sS", "--max-time", "20", "-w", "\n%{http_code} %{content_type}", url});
    std::string out = curl.read_all(25000);
    EXPECT_EQ(curl.wait(5000), 0) << "curl " << url;
    std::size_t end = out.rfind('\n');
    if (end == std::string::npos) return {};
    std::size_t blank = out.find(' ', end);
    return {std::atoi(out.c_str() + end + 1), out.substr(blank + 1), out.substr(0, end)};
}

std::string scratch_parent() { return std::string(rdr_root()) + "/serve-tmp"; }

// tools/serve on the fixture tree, stopped as a terminal's Ctrl-C would stop it.
class Served : public testing::Test {
protected:
    void SetUp() override
    {
        write_viewer_tree();
        if (HasFatalFailure()) return;
        // The configuration is rewritten every second, so the page sees a new file soon; the
        // scratch folder goes where a test can see that it is removed.
        std::filesystem::create_directories(scratch_parent());
        serve_ = std::make_unique<web::Child>(std::vector<std::string>{
            "env", "RDR_SERVE_REFRESH=1", "TMPDIR=" + scratch_parent(), RDR_SOURCE_DIR "/tools/serve",
            RDR_PROGRAM, rdr_root()});
        ASSERT_TRUE(serve_->started());
        ASSERT_TRUE(serve_->read_line(base_, 20000)) << "tools/serve printed no address";
    }

    // A TERM lets the script remove its scratch folder; the group is killed only if that fails.
    void TearDown() override
    {
        if (serve_) serve_->stop(SIGTERM, 10000);
    }

    std::unique_ptr<web::Child> serve_;
    std::string base_;
};

TEST_F(Served, PicturesPageAndConfigurationFromTheProgramsTables)
{
    // lighttpd takes the program's own status line as the status and sends its own; the browser
    // below shows three products more.
    HttpAnswer picture = http_get(base_ + "cgi-bin/rdr_sfc_pty_img?obs=RN15X&tm=202401151230&size=300");
    EXPECT_EQ(picture.status, 200);
    EXPECT_EQ(picture.content_type, "image/png");
    cgi::Picture pic(picture.body);
    EXPECT_TRUE(pic.ok() && pic.width() == 335 && pic.height() == 380) << picture.body.size() << " bytes";
    HttpAnswer page = http_get(base_);
    EXPECT_EQ(page.status, 200);
    EXPECT_EQ(page.content_type, "text/html; charset=utf-8");
    EXPECT_NE(page.body.find("<script src=\"viewer.js\""), std::string::npos);
    // Nothing answers for the point program until one is built beside the picture program.
    EXPECT_EQ(http_get(base_ + "cgi-bin/rdr_sfc_pty_probe").status, 404);

    HttpAnswer config = http_get(base_ + "viewer-config.json");
    EXPECT_EQ(config.content_type, "application/json");
    // The first catalogue entry of a code counts and a code the query cannot carry is left out;
    // the 100-byte file at 12:35 is no time; the colour file's classes slide with the month.
    for (const char *part :
         {"\"refresh\": 1,", "\"titleHeight\": 20, \"legendWidth\": 35,",
          "\"maps\": {\n    \"HR\": {\"nx\": 100, \"ny\": 120, \"xo\": 50, \"yo\": 60},\n"
          "    \"EW\": {\"nx\": 200, \"ny\": 100, \"xo\": 0, \"yo\": 0}\n  },",
          "{\"code\": \"RN15X\", \"title\": \"AWS 강수(15분)*4\", \"unit\": \"mm/h\"",
          "\"bounds\": [0.1, 0.5, 1, 2, 5, 10, 20, 100]", "[-14, -11, -8, -5, -2, 1, 4, 7],\n      [-14",
          "\"times\": [\"202401151200\", \"202401151205\", \"202401151210\", \"202401151220\", "
          "\"202401151225\", \"202401151230\"]\n}"})
        EXPECT_NE(config.body.find(part), std::string::npos) << part << "\nnot in\n" << config.body;
}

// Ctrl-C reaches lighttpd too; a TERM to the script alone must still take lighttpd (of the same
// group) down with it.
void expect_stopped_cleanly(web::Child &serve, const std::string &base, int sig, bool whole_group)
{
    ASSERT_EQ(http_get(base).status, 200);
    EXPECT_EQ(serve.stop(sig, 10000, whole_group), 0);
    EXPECT_FALSE(serve.group_alive()) << "a process of tools/serve outlived it";
    EXPECT_TRUE(std::filesystem::is_empty(scratch_parent())) << "the scratch folder is left";
}

TEST_F(Served, CtrlCStopsTheServerAndLeavesNoProcess) { expect_stopped_cleanly(*serve_, base_, SIGINT, true); }

TEST_F(Served, TermToTheScriptAloneStopsTheServerToo) { expect_stopped_cleanly(*serve_, base_, SIGTERM, false); }

TEST_F(Served, ThePageInABrowserOnADeskAndOnAPhone)
{
    // A clone where "npm ci" has not run yet (tools/test runs it) has no browser driver.
    if (!std::filesystem::exists(RDR_SOURCE_DIR "/tests/web/node_modules/playwright-core")) GTEST_SKIP() << "npm ci in tests/web";
    web::Child browser({RDR_NODE, RDR_SOURCE_DIR "/tests/web/browser_viewer.js", base_, RDR_SHOT_DIR,
                        fixture::grid_path(2024, 1, 15, 12, 30), fixture::grid_path(2024, 1, 15, 12, 40)});
    std::string log = browser.read_all(240000);
    int status = browser.wait(5000);
    std::cout << log;
    EXPECT_EQ(status, 0) << "the browser test failed; its log is above";
}

}  // namespace
