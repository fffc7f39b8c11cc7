// The program and the viewer page as a web server serves them: tools/serve runs lighttpd with the
// project's configuration on a small fixture tree; curl fetches pictures, page and configuration;
// headless Chromium drives the page. Also: new grid files reach the page's list of times, and a
// Ctrl-C or a TERM leaves no process and no scratch folder behind.
#include <signal.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "cgi_run.h"
#include "child.h"
#include "fixture_tree.h"
#include "rdr_paths.h"

namespace {

// The fixture map: 100 x 120 km, so a 300-pixel map is 360 rows high, a square error picture 300.
constexpr int kMapNx = 100;
constexpr int kMapNy = 120;

const std::vector<std::string> kProducts = {"RNEX", "RNSN", "RNSN1", "RNSN2",
                                            "AREA", "TW",   "RN15X", "HSR"};

// A grid with something in every block: rain in the west, snow in the east, values that grow
// to the north-east, so a zoomed picture differs from the whole one once the layers draw it.
fixture::Grid patterned_grid()
{
    fixture::Grid g = fixture::make_grid(kMapNx, kMapNy);
    for (int j = 0; j < kMapNy; j++)
        for (int i = 0; i < kMapNx; i++) {
            std::size_t k = g.at(i, j);
            g.code[k] = i < kMapNx / 2 ? 0x22 : 0x44;
            g.area[k] = (uint8_t)(1 + (i + j) % 3);
            g.tw[k] = fixture::tw_raw(-5.0 + 0.1 * (i + j));
            g.hsr[k] = fixture::rain_raw(0.5 * j);
            g.rn15x[k] = fixture::rain_raw(0.3 * i);
        }
    return g;
}

// Grid files 12:00 .. 12:30 on 2024-01-15, and at 12:35 a file too small to count.
void write_viewer_tree()
{
    fixture::reset_root();
    fixture::install_font();
    ASSERT_TRUE(fixture::write_map_catalogue({"# code:nx:ny:sx:sy", "HR:100:120:50:60",
                                              "EW:200:100:0:0", "HR:5:5:0:0"}));
    fixture::Grid g = patterned_grid();
    for (int mi = 0; mi <= 30; mi += 5) ASSERT_TRUE(fixture::write_grid(g, 2024, 1, 15, 12, mi));
    ASSERT_TRUE(fixture::write_bytes(fixture::grid_path(2024, 1, 15, 12, 35), std::string(100, 'x')));
}

struct HttpAnswer {
    std::string status_line;
    std::string content_type;
    std::string body;
};

std::string lower(std::string s)
{
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return (char)std::tolower(c); });
    return s;
}

// A GET with curl, the client an operator would try first.
HttpAnswer http_get(const std::string &url)
{
    web::Child curl({"curl", "-sS", "--max-time", "20", "-i", url});
    std::string out = curl.read_all(25000);
    EXPECT_EQ(curl.wait(5000), 0) << "curl " << url;
    HttpAnswer a;
    std::size_t head_end = out.find("\r\n\r\n");
    if (head_end == std::string::npos) return a;
    std::string head = out.substr(0, head_end);
    a.body = out.substr(head_end + 4);
    a.status_line = head.substr(0, head.find("\r\n"));
    std::string lowered = lower(head);
    std::size_t at = lowered.find("\r\ncontent-type:");
    if (at != std::string::npos) {
        std::size_t from = at + 15;
        std::size_t to = head.find("\r\n", from);
        a.content_type = head.substr(from, to - from);
        a.content_type.erase(0, a.content_type.find_first_not_of(' '));
    }
    return a;
}

std::string scratch_parent() { return std::string(rdr_root()) + "/serve-tmp"; }

// tools/serve on the fixture tree, stopped as a terminal's Ctrl-C would stop it.
class Served : public testing::Test {
protected:
    void SetUp() override
    {
        write_viewer_tree();
        if (HasFatalFailure()) return;
        // The list of times is rewritten every second, so a test sees a new file soon; the
        // scratch folder goes where a test can see that it is removed.
        std::filesystem::create_directories(scratch_parent());
        serve_ = std::make_unique<web::Child>(std::vector<std::string>{
            "env", "RDR_SERVE_REFRESH=1", "TMPDIR=" + scratch_parent(), RDR_SOURCE_DIR "/tools/serve",
            RDR_PROGRAM, rdr_root()});
        ASSERT_TRUE(serve_->started());
        ASSERT_TRUE(serve_->read_line(base_, 20000)) << "tools/serve printed no address";
        ASSERT_EQ(base_.rfind("http://127.0.0.1:", 0), 0u) << base_;
    }

    // A TERM lets the script remove its scratch folder; the group is killed only if that fails.
    void TearDown() override
    {
        if (serve_) serve_->stop(SIGTERM, 10000);
    }

    std::string picture_url(const std::string &query) const
    {
        return base_ + "cgi-bin/rdr_sfc_pty_img?" + query;
    }

    std::unique_ptr<web::Child> serve_;
    std::string base_;
};

TEST_F(Served, EveryProductArrivesAsAPngOfTheMapsSize)
{
    for (const std::string &obs : kProducts) {
        HttpAnswer a = http_get(picture_url("obs=" + obs + "&tm=202401151230&size=300"));
        // lighttpd takes the program's own status line as the status and sends its own.
        EXPECT_EQ(a.status_line, "HTTP/1.1 200 OK") << obs;
        EXPECT_EQ(a.content_type, "image/png") << obs;
        cgi::Picture pic(a.body);
        ASSERT_TRUE(pic.ok()) << obs << ": body of " << a.body.size() << " bytes is no PNG";
        EXPECT_EQ(pic.width(), 335) << obs;
        EXPECT_EQ(pic.height(), 380) << obs;
        EXPECT_EQ(pic.rgb(0, 20), cgi::rgb(30, 30, 30)) << obs << ": the map frame";
    }
}

TEST_F(Served, AMissingTimeArrivesAsTheErrorPicture)
{
    // 11:00 and the nine times before it have no file; 12:35 has one of only 100 bytes, so the
    // search steps back from it to 12:30.
    HttpAnswer a = http_get(picture_url("obs=RNSN&tm=202401151100&size=300"));
    EXPECT_EQ(a.status_line, "HTTP/1.1 200 OK");
    EXPECT_EQ(a.content_type, "image/png");
    cgi::Picture error(a.body);
    ASSERT_TRUE(error.ok());
    EXPECT_EQ(error.width(), 335);
    EXPECT_EQ(error.height(), 320);
    EXPECT_EQ(error.rgb(0, 0), cgi::rgb(240, 240, 240));

    cgi::Picture stepped(http_get(picture_url("obs=RNSN&tm=202401151235&size=300")).body);
    ASSERT_TRUE(stepped.ok());
    EXPECT_EQ(stepped.height(), 380);
}

TEST_F(Served, PageAndItsConfigurationAreServed)
{
    HttpAnswer page = http_get(base_);
    EXPECT_EQ(page.status_line, "HTTP/1.1 200 OK");
    EXPECT_EQ(page.content_type, "text/html; charset=utf-8");
    EXPECT_NE(page.body.find("<script src=\"viewer.js\""), std::string::npos);
    for (const char *file : {"viewer.js", "viewer.css"})
        EXPECT_EQ(http_get(base_ + file).status_line, "HTTP/1.1 200 OK") << file;

    HttpAnswer config = http_get(base_ + "viewer-config.json");
    EXPECT_EQ(config.content_type, "application/json");
    // The first catalogue entry of a code counts; the 100-byte file at 12:35 is no time.
    EXPECT_EQ(config.body,
              "{\n"
              "  \"cgi\": \"/cgi-bin/rdr_sfc_pty_img\",\n"
              "  \"refresh\": 1,\n"
              "  \"maps\": {\n"
              "    \"HR\": {\"nx\": 100, \"ny\": 120},\n"
              "    \"EW\": {\"nx\": 200, \"ny\": 100}\n"
              "  },\n"
              "  \"times\": [\"202401151200\", \"202401151205\", \"202401151210\", \"202401151215\", "
              "\"202401151220\", \"202401151225\", \"202401151230\"]\n"
              "}\n");
}

TEST_F(Served, NewGridFilesJoinTheListOfTimes)
{
    const std::string url = base_ + "viewer-config.json";
    ASSERT_EQ(http_get(url).body.find("202401151240"), std::string::npos);
    ASSERT_TRUE(fixture::write_grid(patterned_grid(), 2024, 1, 15, 12, 40));
    bool listed = false;
    for (int k = 0; k < 50 && !listed; k++) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        listed = http_get(url).body.find("\"202401151230\", \"202401151240\"]") != std::string::npos;
    }
    EXPECT_TRUE(listed) << http_get(url).body;
}

// Ctrl-C reaches lighttpd too; a TERM to the script alone must still take lighttpd down with it.
void expect_stopped_cleanly(web::Child &serve, const std::string &base, int sig, bool whole_group)
{
    ASSERT_EQ(http_get(base).status_line, "HTTP/1.1 200 OK");
    EXPECT_EQ(serve.stop(sig, 10000, whole_group), 0);
    EXPECT_FALSE(serve.group_alive()) << "a process of tools/serve outlived it";
    EXPECT_TRUE(std::filesystem::is_empty(scratch_parent())) << "the scratch folder is left";
    web::Child probe({"curl", "-sS", "--max-time", "5", base});
    probe.read_all(8000);
    EXPECT_EQ(probe.wait(2000), 7) << "curl should find nothing listening (exit 7)";
}

TEST_F(Served, CtrlCStopsTheServerAndLeavesNoProcess)
{
    expect_stopped_cleanly(*serve_, base_, SIGINT, true);
}

TEST_F(Served, TermToTheScriptAloneStopsTheServerToo)
{
    expect_stopped_cleanly(*serve_, base_, SIGTERM, false);
}

TEST_F(Served, BrowserZoomsAndDrawsASectionByClicks)
{
    web::Child browser({RDR_NODE, RDR_SOURCE_DIR "/tests/web/browser_viewer.js", base_, RDR_SHOT_DIR,
                        fixture::grid_path(2024, 1, 15, 12, 30), fixture::grid_path(2024, 1, 15, 12, 40)});
    std::string log = browser.read_all(180000);
    int status = browser.wait(5000);
    std::cout << log;
    EXPECT_EQ(status, 0) << "the browser test failed; its log is above";
}

}  // namespace
