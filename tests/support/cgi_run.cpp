#include "cgi_run.h"

#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace cgi {

namespace {

// The status line, the header after it and what follows the empty line, when all three are there.
void split_answer(Answer &a)
{
    std::size_t first = a.out.find('\n'), second = first == std::string::npos ? first : a.out.find('\n', first + 1);
    a.status_line = a.out.substr(0, first);
    if (second == std::string::npos) return;
    a.content_type = a.out.substr(first + 1, second - first - 1);
    a.framed = a.out.compare(second + 1, 1, "\n") == 0;
    if (a.framed) a.png = a.out.substr(second + 2);
}

}  // namespace

Answer run(const char *query, int timeout_ms, const char *tz, const char *program, long long address_space)
{
    Answer a;
    int out[2];
    FILE *err = std::tmpfile();
    if (!err || pipe(out) != 0) return a;
    pid_t pid = fork();
    if (pid == 0) {
        dup2(out[1], 1);
        dup2(fileno(err), 2);
        close(out[0]);
        // The sanitizer settings of the test run reach the program too.
        std::string q = std::string("QUERY_STRING=") + (query ? query : ""), t = std::string("TZ=") + tz;
        std::vector<std::string> keep;
        for (const char *name : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "PATH"})
            if (getenv(name)) keep.push_back(std::string(name) + "=" + getenv(name));
        std::vector<char *> env = {&t[0]};
        if (query) env.push_back(&q[0]);
        for (std::string &k : keep) env.push_back(&k[0]);
        env.push_back(nullptr);
        rlimit limit = {(rlim_t)address_space, (rlim_t)address_space};
        if (address_space > 0) setrlimit(RLIMIT_AS, &limit);
        char *argv[] = {const_cast<char *>(program), nullptr};
        execve(program, argv, env.data());
        _exit(127);
    }
    close(out[1]);
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    char buf[65536];
    for (ssize_t n = 1; n > 0;) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
        pollfd fd = {out[0], POLLIN, 0};
        if (left <= 0 || poll(&fd, 1, (int)left) == 0) {
            a.timed_out = true;
            kill(pid, SIGKILL);
            break;
        }
        if ((n = read(out[0], buf, sizeof buf)) > 0) a.out.append(buf, (std::size_t)n);
    }
    close(out[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (WIFEXITED(status)) a.exit_status = WEXITSTATUS(status);
    std::rewind(err);
    for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, err)) > 0;) a.err.append(buf, n);
    std::fclose(err);
    split_answer(a);
    return a;
}

Picture::Picture(const std::string &png)
    : im_(png.empty() ? nullptr : gdImageCreateFromPngPtr((int)png.size(), const_cast<char *>(png.data())))
{
}

int Picture::width() const { return gdImageSX(im_.get()); }
int Picture::height() const { return gdImageSY(im_.get()); }
bool Picture::is_palette() const { return !gdImageTrueColor(im_.get()); }
int Picture::colors() const { return gdImageColorsTotal(im_.get()); }
int Picture::index(int x, int y) const { return gdImageGetPixel(im_.get(), x, y); }
uint32_t Picture::rgb(int x, int y) const { return palette_rgb(index(x, y)); }

uint32_t Picture::palette_rgb(int entry) const
{
    return cgi::rgb(gdImageRed(im_.get(), entry), gdImageGreen(im_.get(), entry), gdImageBlue(im_.get(), entry));
}

}  // namespace cgi
