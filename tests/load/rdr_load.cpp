// Load and fault runs of the program under lighttpd, as tools/serve runs it on 127.0.0.1:
//   rdr_load PROGRAM SOURCE_DIR [REQUESTS [CONCURRENCY [FAULT_REQUESTS]]]   (default 2000 16 1000)
// Sends REQUESTS mixed requests (every product, several sizes and layers, one in ten hostile),
// CONCURRENCY at a time, then FAULT_REQUESTS requests of the current time while its grid file is
// replaced over and over, written in place and renamed in. Every answer must be status 200 with a
// PNG that decodes, and no process of the program may be left once the server stopped. Prints
// the counts, p50/p99 latency and what was left; exits 0 only when all was well.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gd.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
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
const char *const kProducts[] = {"RNSN", "RNSN1", "RNSN2", "RNEX", "AREA", "TW", "HSR", "RN15X"};
const int kSizes[] = {200, 300, 450, 600, 800};
const char *const kLayers[] = {"", "&gis=T", "&zoom_level=2&zoom_x=3300000&zoom_y=4400000", "&aws=8&zoom_level=3&zoom_x=2200000&zoom_y=2200000",
                               "&aws=1&zoom_level=1&zoom_x=2000000&zoom_y=2000000&griddisp=1&legend=0", "&x1=20&y1=30&x2=250&y2=300&rnexdisp=2"};
// Queries a web page would never send, each still answered with a picture.
const char *const kHostile[] = {"obs=RNSN&tm=202401151205&size=99999999999", "obs=RNSN&tm=202401151205&size=300&map=../x",
                                "&&&&=&=&obs=&size=300", "obs=TW&size=300&tm=2024011512051111111111111111111111111111",
                                "obs=HSR&tm=202401151205&size=300&zoom_level=1&zoom_x=abc&zoom_y=-1", "obs=RNEX&tm=202401151205&size=-5"};

// One HTTP/1.0 GET from 127.0.0.1: its status (0 when no answer came) and whether the answer is
// image/png with a PNG that decodes.
struct Reply { int status = 0; bool valid = false; double ms = 0; };
Reply get(int port, const std::string &target)
{
    Reply r;
    auto start = Clock::now();
    int fd = socket(AF_INET, SOCK_STREAM, 0);
    timeval tv = {60, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &tv, sizeof tv);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons((uint16_t)port);
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::string answer, request = "GET " + target + " HTTP/1.0\r\nHost: 127.0.0.1\r\n\r\n";
    if (connect(fd, (sockaddr *)&addr, sizeof addr) == 0 && send(fd, request.data(), request.size(), MSG_NOSIGNAL) > 0) {
        char buf[65536];
        for (ssize_t n; (n = recv(fd, buf, sizeof buf, 0)) > 0;) answer.append(buf, (std::size_t)n);
    }
    close(fd);
    r.ms = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    std::size_t body = answer.find("\r\n\r\n");
    if (answer.compare(0, 5, "HTTP/") != 0 || body == std::string::npos) return r;
    r.status = std::atoi(answer.c_str() + answer.find(' ') + 1);
    gdImagePtr im = answer.size() > body + 4 ? gdImageCreateFromPngPtr((int)(answer.size() - body - 4), &answer[body + 4]) : nullptr;
    std::string head = answer.substr(0, body);
    std::transform(head.begin(), head.end(), head.begin(), [](unsigned char c) { return (char)std::tolower(c); });
    r.valid = r.status == 200 && head.find("\r\ncontent-type: image/png") != std::string::npos && im;
    if (im) gdImageDestroy(im);
    return r;
}

// `count` requests, `concurrency` at a time, the i-th asking query_of(i); prints its tally and
// returns the number of invalid answers.
int run_requests(const char *name, int port, int count, int concurrency, const std::function<std::string(int)> &query_of)
{
    std::mutex m;
    std::atomic<int> next{0};
    int invalid = 0, ok = 0;
    std::vector<double> ms;
    std::vector<std::thread> workers;
    auto start = Clock::now();
    for (int w = 0; w < concurrency; w++)
        workers.emplace_back([&] {
            for (int i; (i = next++) < count;) {
                Reply r = get(port, "/cgi-bin/rdr_sfc_pty_img?" + query_of(i));
                std::lock_guard<std::mutex> lock(m);
                (r.valid ? ok : invalid)++;
                ms.push_back(r.ms);
            }
        });
    for (std::thread &w : workers) w.join();
    std::sort(ms.begin(), ms.end());
    std::printf("%s: %d requests in %.1f s: %d valid, %d invalid; latency p50 %.0f ms, p99 %.0f ms\n", name, count,
                std::chrono::duration<double>(Clock::now() - start).count(), ok, invalid, ms.empty() ? 0 : ms[ms.size() / 2],
                ms.empty() ? 0 : ms[ms.size() * 99 / 100]);
    return invalid;
}

// The map "HR" is 300 x 360 km; grids every 5 minutes of 12:00 .. 12:55 on 2024-01-15, 40
// stations observed around 12:05.
bool write_tree()
{
    std::string root = rdr_root();
    std::error_code ec;
    if (root.find("root") == std::string::npos || root.size() < 8) return false;
    std::filesystem::remove_all(root, ec);
    bool ok = fixture::write_map_catalogue({"HR:300:360:150:180"}) && fixture::write_both_color_files() && fixture::write_terrain(fixture::Terrain()) &&
              fixture::write_outlines("HR", 4, {{{10, 10}, {150, 80}, {290, 30}, {280, 350}, {10, 10}}}) &&
              fixture::write_outlines("HR", 1, {{{0, 180}, {300, 180}}});
    for (int mi = 0; ok && mi < 60; mi += 5) ok = fixture::write_grid(fixture::patterned_grid(300, 360), 2024, 1, 15, 12, mi, 6);
    std::vector<fixture::Station> stations;
    std::vector<fixture::MinuteSlot> minutes;
    for (int k = 0; k < 40; k++) {
        stations.push_back({{90 + 5 * k}, 10.0f + 7.0f * (float)k, 20.0f + 8.0f * (float)k});
        for (int mi = 0; mi <= 10; mi++) {
            minutes.push_back({mi, 90 + 5 * k, fixture::minute_record(90 + 5 * k, 2024, 1, 15, 12, mi)});
            int16_t *d = minutes.back().record.d;
            d[7] = (int16_t)(k % 2), d[65] = (int16_t)(90 * k), d[66] = (int16_t)(10 * k), d[67] = (int16_t)(3 * k);
        }
    }
    return ok && fixture::write_station_catalogues(stations, 150, 180) && fixture::write_minute_hour(2024, 1, 15, 12, minutes);
}

// The grid file of the program's "now" (the clock rounded down to 5 minutes) less some minutes.
std::string grid_of_now(int back_minutes)
{
    int YY, MM, DD, HH, MI, SS;
    get_time(&YY, &MM, &DD, &HH, &MI, &SS);
    seq2time(time2seq(YY, MM, DD, HH, MI, 'm') / 5 * 5 - back_minutes, &YY, &MM, &DD, &HH, &MI, 'm', 'n');
    return fixture::grid_path(YY, MM, DD, HH, MI);
}

// Replaces the current grid file until `stop`, in turn written in place in four pieces (readers
// may see any prefix of it) and written aside and renamed in, with grids of two sizes.
void replace_grid(const std::atomic<bool> &stop, int *rounds)
{
    const std::string zipped[] = {fixture::gzip_bytes(fixture::encode_grid(fixture::patterned_grid(300, 360))),
                                  fixture::gzip_bytes(fixture::encode_grid(fixture::patterned_grid(150, 180)))};
    std::string scratch = std::string(rdr_root()) + "/replacement.gz";
    for (*rounds = 0; !stop; ++*rounds) {
        std::string path = grid_of_now(0);
        const std::string &bytes = zipped[*rounds % 2];
        fixture::make_parent_dirs(path);
        if (*rounds % 2 == 0) {
            int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            for (std::size_t done = 0, piece = bytes.size() / 4 + 1; fd >= 0 && done < bytes.size(); done += piece) {
                if (write(fd, bytes.data() + done, std::min(piece, bytes.size() - done)) <= 0) break;
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
            }
            close(fd);
        } else if (fixture::write_bytes(scratch, bytes)) {
            std::rename(scratch.c_str(), path.c_str());
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

// Processes whose executable is the program.
int processes_of(const std::string &program)
{
    int n = 0;
    std::error_code ec, link_ec;
    for (const auto &entry : std::filesystem::directory_iterator("/proc", ec))
        n += std::filesystem::read_symlink(entry.path() / "exe", link_ec) == program && !link_ec;
    return n;
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc < 3 || !write_tree()) {
        std::fprintf(stderr, "usage: rdr_load PROGRAM SOURCE_DIR [REQUESTS [CONCURRENCY [FAULT_REQUESTS]]] (with a test root)\n");
        return 2;
    }
    auto arg = [&](int k, int fallback) { return argc > k ? std::max(1, std::atoi(argv[k])) : fallback; };
    std::string program = std::filesystem::canonical(argv[1]).string();
    signal(SIGPIPE, SIG_IGN);
    web::Child server({std::string(argv[2]) + "/tools/serve", program, rdr_root()});
    std::string url;
    if (!server.started() || !server.read_line(url, 30000)) return std::fprintf(stderr, "rdr_load: tools/serve did not start\n"), 1;
    int port = std::atoi(url.c_str() + url.rfind(':') + 1);
    // The judge of the answers must be able to say no: a page that is not a picture.
    if (get(port, "/index.html").valid) return std::fprintf(stderr, "rdr_load: the page was judged a picture\n"), 1;

    int invalid = run_requests("load", port, arg(3, 2000), arg(4, 16), [](int i) {
        if (i % 10 == 9) return std::string(kHostile[i / 10 % 6]);
        char q[256];
        std::snprintf(q, sizeof q, "obs=%s&tm=2024011512%02d&size=%d%s", kProducts[i % 8], 5 * (i / 8 % 12), kSizes[i / 3 % 5], kLayers[i / 5 % 6]);
        return std::string(q);
    });
    // The slot before stays, so a reader that finds the current file too small steps back to it.
    fixture::write_gzip(grid_of_now(5), fixture::encode_grid(fixture::patterned_grid(300, 360)));
    std::atomic<bool> stop{false};
    int rounds = 0;
    std::thread writer([&] { replace_grid(stop, &rounds); });
    invalid += run_requests("fault", port, arg(5, 1000), arg(4, 16), [](int i) {
        return std::string("obs=") + kProducts[i % 8] + "&size=" + std::to_string(kSizes[i / 8 % 3]) + (i % 4 ? "" : "&gis=T");
    });
    stop = true;
    writer.join();
    int stopped = server.stop(SIGTERM, 20000), left = processes_of(program);
    std::printf("the grid file was replaced %d times; after the server stopped (status %d): %d processes left%s\n", rounds,
                stopped, left, server.group_alive() ? ", server still running" : "");
    bool ok = invalid == 0 && left == 0 && stopped == 0 && !server.group_alive();
    std::printf("load and fault runs: %s\n", ok ? "every answer a valid PNG" : "FAILED");
    return ok ? 0 : 1;
}
