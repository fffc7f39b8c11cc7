// The benchmark driver: runs every benchmark request through each build of the program as a web
// server would (a new process, QUERY_STRING, the answer read from a pipe), and the request's floor
// (zlib inflating exactly the blocks it needs, plus a process linked like the program writing a
// blank picture of the same size), interleaved over the repeats so that noise hits all alike.
// First checks that every build draws the reference build's pixels. Prints per request and build
// the median time, the floor, their ratio and spread, the same for processor time, and the peak
// memory; then the probe's answers beside the picture that inflates the same bytes. Exit status 0
// when every picture matched, 1 when one did not or a run failed, 2 for a usage error.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "picture_compare.h"
#include "rdr_paths.h"
#include "requests.h"

extern char **environ;

namespace {

constexpr double RATIO_GOAL = 1.5;
constexpr double MEMORY_GOAL_MIB = 64.0;
constexpr double PROBE_RATIO_GOAL = 1.0;

struct Build {
    std::string name;
    std::string path;
};

struct Options {
    std::vector<Build> builds;  // the first is the one the goals are for
    std::string reference;      // the straightforward build, whose pictures the others must match
    std::string inflate_tool;
    std::string blank_tool;
    std::string probe;          // the probe, timed beside its picture; empty: not timed
    int repeat = 15;
};

struct Run {
    bool ok = false;
    double ms = 0;      // wall clock, start to exit
    double cpu_ms = 0;  // processor time, user and system
    long peak_kib = 0;
    std::string out;
};

double quantile(std::vector<double> s, double q)
{
    std::sort(s.begin(), s.end());
    if (s.empty()) return 0;
    double at = q * (double)(s.size() - 1);
    std::size_t lo = (std::size_t)at;
    std::size_t hi = std::min(lo + 1, s.size() - 1);
    return s[lo] + (s[hi] - s[lo]) * (at - (double)lo);
}

struct Samples {
    std::vector<double> ms, cpu_ms;
    long peak_kib = 0;

    void add(const Run &r)
    {
        ms.push_back(r.ms);
        cpu_ms.push_back(r.cpu_ms);
        peak_kib = std::max(peak_kib, r.peak_kib);
    }
    double median() const { return quantile(ms, 0.5); }
    double cpu_median() const { return quantile(cpu_ms, 0.5); }
    // Half the interquartile range against the median: how far a typical run strays.
    double spread() const { return median() > 0 ? (quantile(ms, 0.75) - quantile(ms, 0.25)) / 2 / median() : 0; }
};

double ms_of(const timeval &t) { return (double)t.tv_sec * 1e3 + (double)t.tv_usec / 1e3; }

double since_ms(std::chrono::steady_clock::time_point t)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t).count();
}

// One process from start to exit: its wall time, its peak resident memory and its standard output.
Run run_process(const std::vector<std::string> &args, const std::string &query)
{
    Run r;
    int out[2];
    if (pipe(out) != 0) return r;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    posix_spawn_file_actions_addclose(&actions, out[1]);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);

    std::vector<char *> argv;
    for (const std::string &a : args) argv.push_back(const_cast<char *>(a.c_str()));
    argv.push_back(nullptr);
    std::string q = "QUERY_STRING=" + query;
    std::string tz = std::string("TZ=") + (getenv("TZ") ? getenv("TZ") : "UTC0");
    char *envp[] = {const_cast<char *>(q.c_str()), const_cast<char *>(tz.c_str()), nullptr};

    auto start = std::chrono::steady_clock::now();
    pid_t pid;
    int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), envp);
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    if (spawned != 0) {
        close(out[0]);
        return r;
    }
    char buf[1 << 16];
    ssize_t n;
    while ((n = read(out[0], buf, sizeof buf)) > 0) r.out.append(buf, (std::size_t)n);
    close(out[0]);
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    r.ms = since_ms(start);
    r.cpu_ms = ms_of(usage.ru_utime) + ms_of(usage.ru_stime);
    r.peak_kib = usage.ru_maxrss;
    r.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return r;
}

// The PNG of a CGI answer: what follows the status line, the content type and the empty line.
std::string png_of(const std::string &answer)
{
    std::size_t at = answer.find("\n\n");
    return at == std::string::npos ? std::string() : answer.substr(at + 2);
}

// Width and height from the PNG's header chunk.
bool png_size(const std::string &png, int *width, int *height)
{
    if (png.size() < 24) return false;
    auto be32 = [&](std::size_t at) {
        const unsigned char *p = (const unsigned char *)png.data() + at;
        return (int)((unsigned)p[0] << 24 | (unsigned)p[1] << 16 | (unsigned)p[2] << 8 | p[3]);
    };
    *width = be32(16);
    *height = be32(20);
    return true;
}

std::string field(const std::string &query, const char *key)
{
    std::string k = std::string(key) + "=";
    std::size_t at = query.rfind(k, 0) == 0 ? 0 : query.find("&" + k);
    if (at == std::string::npos) return "";
    at += at == 0 ? k.size() : k.size() + 1;
    return query.substr(at, query.find('&', at) - at);
}

bool parse_options(int argc, char **argv, Options &o)
{
    for (int k = 1; k + 1 < argc; k += 2) {
        std::string key = argv[k], value = argv[k + 1];
        if (key == "--build" && value.find('=') != std::string::npos)
            o.builds.push_back({value.substr(0, value.find('=')), value.substr(value.find('=') + 1)});
        else if (key == "--reference")
            o.reference = value;
        else if (key == "--inflate")
            o.inflate_tool = value;
        else if (key == "--blank")
            o.blank_tool = value;
        else if (key == "--probe")
            o.probe = value;
        else if (key == "--repeat")
            o.repeat = std::max(1, std::atoi(value.c_str()));
        else
            return false;
    }
    return argc % 2 == 1 && !o.builds.empty() && !o.inflate_tool.empty() && !o.blank_tool.empty();
}

struct Request {
    std::string query;
    std::string grid;
    int width = 0, height = 0;
    std::vector<Samples> builds;
    Samples inflate, blank;
    long long inflated_bytes = 0;
};

// The grid file of the data time, by the program's own path rule.
std::string grid_file_of_data_time()
{
    int YY, MM, DD, HH, MI;
    std::sscanf(bench::kDataTime, "tm=%4d%2d%2d%2d%2d", &YY, &MM, &DD, &HH, &MI);
    char path[RDR_PATH_CAP];
    return grid_file_path(path, sizeof path, YY, MM, DD, HH, MI) == 0 ? path : "";
}

// One run of each build on each request: the pictures must match the reference build's.
bool check_pictures(const Options &o, std::vector<Request> &requests)
{
    bool all_same = true;
    for (Request &rq : requests) {
        std::string reference = o.reference.empty() ? "" : png_of(run_process({o.reference}, rq.query).out);
        for (const Build &b : o.builds) {
            Run r = run_process({b.path}, rq.query);
            std::string png = png_of(r.out);
            int width, height;
            if (!r.ok || !png_size(png, &width, &height)) {
                std::printf("%-6s %s: no picture\n", b.name.c_str(), rq.query.c_str());
                all_same = false;
                continue;
            }
            // The floor's picture takes the size of the goal build's picture.
            if (&b == &o.builds[0]) {
                rq.width = width;
                rq.height = height;
            }
            if (o.reference.empty()) continue;
            std::string diff = cgi::picture_difference(reference, png);
            std::printf("%-6s %-100s %s\n", b.name.c_str(), rq.query.c_str(),
                        diff.empty() ? "same pixels as the straightforward build" : diff.c_str());
            all_same = all_same && diff.empty();
        }
    }
    return all_same;
}

bool measure(const Options &o, std::vector<Request> &requests)
{
    for (int rep = 0; rep < o.repeat; rep++) {
        for (Request &rq : requests) {
            for (std::size_t b = 0; b < o.builds.size(); b++) {
                Run r = run_process({o.builds[b].path}, rq.query);
                if (!r.ok) return false;
                rq.builds[b].add(r);
            }
            Run inflate = run_process({o.inflate_tool, rq.grid, field(rq.query, "obs")}, "");
            Run blank = run_process({o.blank_tool, std::to_string(rq.width), std::to_string(rq.height)}, "");
            double bytes = 0, ms = 0, cpu_ms = 0;
            if (!inflate.ok || !blank.ok ||
                std::sscanf(inflate.out.c_str(), "%lf %lf %lf", &bytes, &ms, &cpu_ms) != 3)
                return false;
            rq.inflated_bytes = (long long)bytes;
            // Inflating only: its process start is the blank run's part.
            inflate.ms = ms;
            inflate.cpu_ms = cpu_ms;
            rq.inflate.add(inflate);
            rq.blank.add(blank);
        }
    }
    return true;
}

bool print_table(const Options &o, const std::vector<Request> &requests)
{
    bool goals = true;
    std::printf("\n%-3s %-8s %9s %9s %6s %7s %8s %9s %6s %9s\n", "", "build", "median", "floor", "ratio", "spread",
                "cpu", "cpu floor", "ratio", "peak MiB");
    int k = 0;
    for (const Request &rq : requests) {
        double floor = rq.inflate.median() + rq.blank.median();
        double cpu_floor = rq.inflate.cpu_median() + rq.blank.cpu_median();
        std::printf("%d   %s\n", ++k, rq.query.c_str());
        for (std::size_t b = 0; b < o.builds.size(); b++) {
            const Samples &s = rq.builds[b];
            double ratio = s.median() / floor, mib = (double)s.peak_kib / 1024.0;
            std::printf("%-3s %-8s %9.1f %9.1f %6.2f %6.0f%% %8.1f %9.1f %6.2f %9.1f\n", "", o.builds[b].name.c_str(),
                        s.median(), floor, ratio, 100 * s.spread(), s.cpu_median(), cpu_floor,
                        s.cpu_median() / cpu_floor, mib);
            if (b == 0) goals = goals && ratio <= RATIO_GOAL && mib < MEMORY_GOAL_MIB;
        }
        std::printf("%-3s floor: zlib inflates %.1f MB in %.1f ms (spread %.0f%%), a blank %dx%d picture %.1f ms "
                    "(spread %.0f%%)\n",
                    "", (double)rq.inflated_bytes / 1e6, rq.inflate.median(), 100 * rq.inflate.spread(), rq.width,
                    rq.height, rq.blank.median(), 100 * rq.blank.spread());
    }
    std::printf("\n%s: every request within %.1f times its floor and under %.0f MiB\n", goals ? "met" : "NOT met",
                RATIO_GOAL, MEMORY_GOAL_MIB);
    return goals;
}

// The probe's requests and their picture, interleaved over the repeats, with the first build's
// picture; false when a run failed or an answer is an error.
bool time_probe(const Options &o)
{
    const std::string when = std::string("&") + bench::kDataTime;
    const std::size_t n = std::size(bench::kProbeRequests);
    Samples picture;
    std::vector<Samples> probe(n);
    for (int rep = 0; rep < o.repeat; rep++) {
        Run p = run_process({o.builds[0].path}, bench::kProbePicture + when);
        if (!p.ok) return false;
        picture.add(p);
        for (std::size_t k = 0; k < n; k++) {
            Run r = run_process({o.probe}, bench::kProbeRequests[k] + when);
            if (!r.ok || r.out.find("\"error\"") != std::string::npos) return false;
            probe[k].add(r);
        }
    }
    std::printf("\nThe probe beside the picture %s (%s), which inflates the same bytes; ms, medians:\n",
                bench::kProbePicture, o.builds[0].name.c_str());
    std::printf("%-40s %9s %6s %8s %9s %9s %6s\n", "probe request", "median", "spread", "cpu", "picture", "pic cpu",
                "ratio");
    bool goal = true;
    for (std::size_t k = 0; k < n; k++) {
        double ratio = probe[k].median() / picture.median();
        std::printf("%-40s %9.1f %5.0f%% %8.1f %9.1f %9.1f %6.2f\n", bench::kProbeRequests[k], probe[k].median(),
                    100 * probe[k].spread(), probe[k].cpu_median(), picture.median(), picture.cpu_median(), ratio);
        goal = goal && ratio <= PROBE_RATIO_GOAL;
    }
    std::printf("%s: every probe answer within %.1f times the picture's time\n", goal ? "met" : "NOT met",
                PROBE_RATIO_GOAL);
    return true;
}

}  // namespace

int main(int argc, char **argv)
{
    // The data time, YYYYMMDDHHMI, for the script that writes the sample tree.
    if (argc == 2 && std::strcmp(argv[1], "--data-time") == 0) {
        std::printf("%s\n", std::strchr(bench::kDataTime, '=') + 1);
        return 0;
    }
    Options o;
    if (!parse_options(argc, argv, o)) {
        std::fprintf(stderr,
                     "usage: rdr_bench --build NAME=PROGRAM [--build NAME=PROGRAM]... [--reference PROGRAM]\n"
                     "                 --inflate TOOL --blank TOOL [--probe PROBE] [--repeat N]\n"
                     "       rdr_bench --data-time\n");
        return 2;
    }
    std::string grid = grid_file_of_data_time();
    std::vector<Request> requests;
    for (const char *q : bench::kRequests) {
        Request rq;
        rq.query = std::string(q) + "&" + bench::kDataTime;
        rq.grid = grid;
        rq.builds.resize(o.builds.size());
        requests.push_back(rq);
    }
    bool same = check_pictures(o, requests);
    if (!measure(o, requests)) {
        std::fprintf(stderr, "rdr_bench: a run failed\n");
        return 1;
    }
    std::printf("\n%d runs of each, interleaved. Times in ms, medians: wall clock from start to exit (the goal), and\n"
                "processor time (user and system), which other work on the machine disturbs less. Spread: half the\n"
                "interquartile range of the wall times against their median.\n",
                o.repeat);
    print_table(o, requests);
    if (!o.probe.empty() && !time_probe(o)) {
        std::fprintf(stderr, "rdr_bench: a probe run failed or answered an error\n");
        return 1;
    }
    if (!same) std::printf("\nNOT the same pixels: see the checks above\n");
    return same ? 0 : 1;
}
