// Load and fault runs of the program under lighttpd, as tools/serve runs it on 127.0.0.1.
//   rdr_load PROGRAM SOURCE_DIR [REQUESTS [CONCURRENCY [FAULT_REQUESTS]]]   (default 2000 16 1000)
// Writes a data tree under the build's root, starts tools/serve on it, and sends REQUESTS mixed
// requests (every product, several sizes and layers, one in ten hostile), CONCURRENCY at a time.
// Then the fault run: FAULT_REQUESTS requests of the current time while the grid file of the
// current time is replaced over and over, written in place and renamed in. Every answer must be
// status 200 with a PNG that decodes; after the server is stopped no process of the program may
// be left. Prints the counts by status, the latencies (p50, p99) and the processes left; exits 0
// only when no answer was invalid and nothing was left.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gd.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "child.h"
#include "picture_writers.h"
#include "rdr_paths.h"
#include "rdr_writers.h"
#include "seq_time.h"
#include "station_writers.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kTimeoutSeconds = 60;
const char *const kProducts[] = {"RNSN", "RNSN1", "RNSN2", "RNEX", "AREA", "TW", "HSR", "RN15X"};
const int kSizes[] = {200, 300, 450, 600, 800};
const char *const kLayers[] = {"",
                               "&gis=T",
                               "&zoom_level=2&zoom_x=3300000&zoom_y=4400000",
                               "&aws=8&zoom_level=3&zoom_x=2200000&zoom_y=2200000",
                               "&aws=1&zoom_level=1&zoom_x=2000000&zoom_y=2000000&griddisp=1&legend=0",
                               "&x1=20&y1=30&x2=250&y2=300&rnexdisp=2"};
// Queries a web page would never send, each still answered with a picture.
const char *const kHostile[] = {
    "obs=RNSN&tm=202401151205&size=99999999999",
    "obs=RNSN&tm=202401151205&size=300&map=../x",
    "obs=rnsn&tm=202401151205&size=300",
    "&&&&=&=&obs=&size=300",
    "obs=TW&size=300&tm=2024011512051111111111111111111111111111",
    "obs=HSR&tm=202401151205&size=300&zoom_level=1&zoom_x=abc&zoom_y=-1",
    "obs=RNEX&tm=202401151205&size=-5",
    "obs=AREA&tm=202401151205&size=300&x1=2147483647&y1=-2147483648&x2=-1&y2=99999999",
};

struct Reply {
    int status = 0;  // 0: no answer (connection failed or timed out)
    bool valid = false;
    bool error_picture = false;
    double ms = 0;
};

std::string lower(std::string s)
{
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return (char)std::tolower(c); });
    return s;
}

// Whether the body is a PNG that the graphics library decodes, and whether it is the error
// picture (two colours, grey in the corner).
bool decodes(const std::string &png, bool *error_picture)
{
    gdImagePtr im = png.empty() ? nullptr : gdImageCreateFromPngPtr((int)png.size(), (void *)png.data());
    if (!im) return false;
    int corner = gdImageGetPixel(im, 0, 0);
    *error_picture = gdImageColorsTotal(im) == 2 && gdImageRed(im, corner) == 240;
    gdImageDestroy(im);
    return true;
}

// One HTTP/1.0 GET of `target` from 127.0.0.1; valid when the answer is 200, image/png and a
// decodable PNG.
Reply get(int port, const std::string &target)
{
    Reply r;
    auto start = Clock::now();
    int fd = socket(AF_INET, SOCK_STREAM, 0);
    timeval tv = {kTimeoutSeconds, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &tv, sizeof tv);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons((uint16_t)port);
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::string answer;
    if (connect(fd, (sockaddr *)&addr, sizeof addr) == 0) {
        std::string request = "GET " + target + " HTTP/1.0\r\nHost: 127.0.0.1\r\n\r\n";
        if (send(fd, request.data(), request.size(), MSG_NOSIGNAL) == (ssize_t)request.size()) {
            char buf[65536];
            ssize_t n;
            while ((n = recv(fd, buf, sizeof buf, 0)) > 0) answer.append(buf, (std::size_t)n);
        }
    }
    close(fd);
    r.ms = std::chrono::duration<double, std::milli>(Clock::now() - start).count();

    std::size_t head_end = answer.find("\r\n\r\n");
    if (answer.compare(0, 5, "HTTP/") != 0 || head_end == std::string::npos) return r;
    r.status = std::atoi(answer.c_str() + answer.find(' ') + 1);
    std::string head = lower(answer.substr(0, head_end));
    r.valid = r.status == 200 && head.find("\r\ncontent-type: image/png") != std::string::npos &&
              decodes(answer.substr(head_end + 4), &r.error_picture);
    return r;
}

struct Tally {
    std::map<int, int> by_status;
    int invalid = 0;
    int error_pictures = 0;
    std::vector<double> ms;

    void print(const char *name, double seconds) const
    {
        std::vector<double> sorted = ms;
        std::sort(sorted.begin(), sorted.end());
        auto pct = [&](double p) { return sorted.empty() ? 0.0 : sorted[(std::size_t)(p * (sorted.size() - 1))]; };
        std::printf("%s: %zu requests in %.1f s; status", name, ms.size(), seconds);
        for (const auto &s : by_status) std::printf(" %d: %d", s.first, s.second);
        std::printf("; invalid answers: %d (error pictures among the valid: %d); latency p50 %.0f ms, p99 %.0f ms, "
                    "max %.0f ms\n",
                    invalid, error_pictures, pct(0.50), pct(0.99), sorted.empty() ? 0.0 : sorted.back());
    }
};

// `count` requests, `concurrency` at a time; the i-th asks query_of(i).
Tally run_requests(int port, int count, int concurrency, const std::function<std::string(int)> &query_of)
{
    Tally t;
    std::mutex m;
    std::atomic<int> next{0};
    std::vector<std::thread> workers;
    for (int w = 0; w < concurrency; w++)
        workers.emplace_back([&] {
            for (int i; (i = next++) < count;) {
                Reply r = get(port, "/cgi-bin/rdr_sfc_pty_img?" + query_of(i));
                std::lock_guard<std::mutex> lock(m);
                t.by_status[r.status]++;
                t.invalid += r.valid ? 0 : 1;
                t.error_pictures += r.valid && r.error_picture ? 1 : 0;
                t.ms.push_back(r.ms);
            }
        });
    for (std::thread &w : workers) w.join();
    return t;
}

std::string mixed_query(int i)
{
    if (i % 10 == 9) return kHostile[(i / 10) % (sizeof kHostile / sizeof *kHostile)];
    char q[256];
    std::snprintf(q, sizeof q, "obs=%s&tm=2024011512%02d&size=%d%s", kProducts[i % 8], 5 * (i / 8 % 12),
                  kSizes[i / 3 % 5], kLayers[i / 5 % 6]);
    return q;
}

std::string current_time_query(int i)
{
    char q[128];
    std::snprintf(q, sizeof q, "obs=%s&size=%d%s", kProducts[i % 8], kSizes[i / 8 % 3], i % 4 == 0 ? "&gis=T" : "");
    return q;
}

// The map "HR" is 300 x 360 km; grids every 5 minutes of 12:00 .. 12:55 on 2024-01-15, stations
// with observations around 12:05.
bool write_tree()
{
    namespace fs = std::filesystem;
    std::string root = rdr_root();
    if (root.find("root") == std::string::npos || root.size() < 8) return false;
    std::error_code ec;
    fs::remove_all(root, ec);
    fs::create_directories(root);
    bool ok = fixture::write_map_catalogue({"HR:300:360:150:180", "SR:60:60:30:30"}) &&
              fixture::write_both_color_files() &&
              fixture::write_outlines("HR", 4, {{{10, 10}, {150, 80}, {290, 30}, {280, 350}, {20, 300}, {10, 10}}}) &&
              fixture::write_outlines("HR", 1, {{{0, 180}, {300, 180}}}) && fixture::write_terrain(fixture::Terrain());
    fixture::Grid g = fixture::patterned_grid(300, 360);
    for (int mi = 0; ok && mi < 60; mi += 5) ok = fixture::write_grid(g, 2024, 1, 15, 12, mi, 6);

    std::vector<fixture::Station> stations;
    std::vector<fixture::MinuteSlot> minutes;
    for (int k = 0; k < 40; k++) {
        fixture::Station s;
        s.list.stn_id = 90 + 5 * k;
        s.x = 10.0f + 7.0f * (float)k;
        s.y = 20.0f + 8.0f * (float)k;
        stations.push_back(s);
        for (int mi = 0; mi <= 10; mi++) {
            AWS3_DATA r = fixture::minute_record(s.list.stn_id, 2024, 1, 15, 12, mi);
            r.d[7] = (int16_t)(k % 2);
            r.d[65] = (int16_t)(90 * k);
            r.d[66] = (int16_t)(10 * k);
            r.d[67] = (int16_t)(3 * k);
            minutes.push_back({mi, s.list.stn_id, r});
        }
    }
    std::ifstream font(RDR_SYSTEM_FONT, std::ios::binary);
    std::string font_bytes((std::istreambuf_iterator<char>(font)), {});
    return ok && fixture::write_station_catalogues(stations, 150, 180) &&
           fixture::write_minute_hour(2024, 1, 15, 12, minutes) && fixture::write_bytes(font_path(), font_bytes);
}

// The grid file of the slot the program takes for "now" (the clock rounded down to 5 minutes).
std::string current_grid_path(int back_minutes)
{
    int YY, MM, DD, HH, MI, SS;
    get_time(&YY, &MM, &DD, &HH, &MI, &SS);
    int seq = time2seq(YY, MM, DD, HH, MI, 'm') / 5 * 5 - back_minutes;
    seq2time(seq, &YY, &MM, &DD, &HH, &MI, 'm', 'n');
    return fixture::grid_path(YY, MM, DD, HH, MI);
}

// Replaces the current grid file until told to stop: written in place in pieces (readers may see
// any prefix of it) and written aside and renamed, with grids of two sizes in turn.
struct Replacer {
    std::atomic<bool> stop{false};
    int in_place = 0, renamed = 0;

    void run()
    {
        const std::string files[] = {fixture::encode_grid(fixture::patterned_grid(300, 360)),
                                     fixture::encode_grid(fixture::patterned_grid(150, 180))};
        std::string zipped[2];
        std::string scratch = std::string(rdr_root()) + "/replacement.gz";
        for (int k = 0; k < 2; k++) {
            fixture::write_gzip(scratch, files[k]);
            std::ifstream in(scratch, std::ios::binary);
            zipped[k].assign(std::istreambuf_iterator<char>(in), {});
        }
        for (int round = 0; !stop; round++) {
            std::string path = current_grid_path(0);
            fixture::make_parent_dirs(path);
            const std::string &bytes = zipped[round % 2];
            if (round % 2 == 0) {
                int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
                for (std::size_t done = 0; fd >= 0 && done < bytes.size();) {
                    std::size_t piece = std::min<std::size_t>(bytes.size() - done, bytes.size() / 4 + 1);
                    if (write(fd, bytes.data() + done, piece) <= 0) break;
                    done += piece;
                    std::this_thread::sleep_for(std::chrono::milliseconds(2));
                }
                if (fd >= 0) close(fd);
                in_place++;
            } else {
                fixture::write_bytes(scratch, bytes);
                std::rename(scratch.c_str(), path.c_str());
                renamed++;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
};

// Processes whose executable is the program.
int processes_of(const std::string &program)
{
    namespace fs = std::filesystem;
    int n = 0;
    std::error_code ec;
    for (const auto &entry : fs::directory_iterator("/proc", ec)) {
        std::error_code link_ec;
        fs::path exe = fs::read_symlink(entry.path() / "exe", link_ec);
        if (!link_ec && exe == program) n++;
    }
    return n;
}

int number_arg(int argc, char **argv, int k, int fallback) { return argc > k ? std::atoi(argv[k]) : fallback; }

}  // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: rdr_load PROGRAM SOURCE_DIR [REQUESTS [CONCURRENCY [FAULT_REQUESTS]]]\n");
        return 2;
    }
    std::string program = std::filesystem::canonical(argv[1]).string();
    std::string serve = std::string(argv[2]) + "/tools/serve";
    int requests = number_arg(argc, argv, 3, 2000);
    int concurrency = std::max(1, number_arg(argc, argv, 4, 16));
    int fault_requests = number_arg(argc, argv, 5, 1000);
    if (!write_tree()) {
        std::fprintf(stderr, "rdr_load: cannot write the data tree under %s\n", rdr_root());
        return 1;
    }
    signal(SIGPIPE, SIG_IGN);

    web::Child server({serve, program, rdr_root()});
    std::string url;
    if (!server.started() || !server.read_line(url, 30000)) {
        std::fprintf(stderr, "rdr_load: tools/serve did not start\n");
        return 1;
    }
    int port = std::atoi(url.c_str() + url.rfind(':') + 1);
    std::printf("serving %s at %s\n", program.c_str(), url.c_str());
    // The judge of the answers must be able to say no: a page that is not a picture.
    Reply probe = get(port, "/index.html");
    if (probe.status != 200 || probe.valid) {
        std::fprintf(stderr, "rdr_load: the page was answered %d and judged %s\n", probe.status,
                     probe.valid ? "a picture" : "no picture");
        return 1;
    }

    auto start = Clock::now();
    Tally load = run_requests(port, requests, concurrency, mixed_query);
    double load_s = std::chrono::duration<double>(Clock::now() - start).count();
    load.print("load", load_s);

    // The slot before the current one stays, so a reader that finds the current file too small
    // to count steps back to it.
    fixture::write_gzip(current_grid_path(5), fixture::encode_grid(fixture::patterned_grid(300, 360)));
    Replacer replacer;
    std::thread writer([&] { replacer.run(); });
    start = Clock::now();
    Tally fault = run_requests(port, fault_requests, concurrency, current_time_query);
    double fault_s = std::chrono::duration<double>(Clock::now() - start).count();
    replacer.stop = true;
    writer.join();
    fault.print("fault", fault_s);
    std::printf("fault: the grid file was replaced %d times in place and %d times by rename\n", replacer.in_place,
                replacer.renamed);

    int stopped = server.stop(SIGTERM, 20000);
    int left = processes_of(program);
    bool server_left = server.group_alive();
    std::printf("after the server stopped (status %d): %d processes of the program left, server %s\n", stopped, left,
                server_left ? "still running" : "gone");
    bool ok = load.invalid == 0 && fault.invalid == 0 && left == 0 && !server_left && stopped == 0;
    std::printf("%s\n", ok ? "load and fault runs: every answer a valid PNG" : "load and fault runs: FAILED");
    return ok ? 0 : 1;
}
