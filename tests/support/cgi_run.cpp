#include "cgi_run.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace cgi {

namespace {

void split_answer(Answer &a)
{
    std::size_t first = a.out.find('\n');
    if (first == std::string::npos) {
        a.status_line = a.out;
        return;
    }
    a.status_line = a.out.substr(0, first);
    std::size_t second = a.out.find('\n', first + 1);
    if (second == std::string::npos) return;
    a.content_type = a.out.substr(first + 1, second - first - 1);
    if (second + 1 < a.out.size() && a.out[second + 1] == '\n') {
        a.png = a.out.substr(second + 2);
        a.framed = true;
    }
}

void drain(int fd, std::string &into, bool &open)
{
    char buf[65536];
    ssize_t n = read(fd, buf, sizeof buf);
    if (n > 0)
        into.append(buf, (std::size_t)n);
    else if (n == 0 || (errno != EINTR && errno != EAGAIN))
        open = false;
}

}  // namespace

Answer run(const char *query, int timeout_ms, const char *tz, const char *program)
{
    Answer a;
    int out_pipe[2], err_pipe[2];
    if (pipe(out_pipe) != 0 || pipe(err_pipe) != 0) return a;

    pid_t pid = fork();
    if (pid == 0) {
        dup2(out_pipe[1], 1);
        dup2(err_pipe[1], 2);
        close(out_pipe[0]); close(out_pipe[1]); close(err_pipe[0]); close(err_pipe[1]);
        std::string q = query ? std::string("QUERY_STRING=") + query : std::string();
        std::string t = std::string("TZ=") + tz;
        std::vector<char *> env;
        if (query) env.push_back(const_cast<char *>(q.c_str()));
        env.push_back(const_cast<char *>(t.c_str()));
        // Sanitizer settings of the test run reach the program too.
        for (const char *name : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "PATH"}) {
            if (const char *v = getenv(name)) {
                static std::vector<std::string> keep;
                keep.push_back(std::string(name) + "=" + v);
                env.push_back(const_cast<char *>(keep.back().c_str()));
            }
        }
        env.push_back(nullptr);
        char *argv[] = {const_cast<char *>(program), nullptr};
        execve(program, argv, env.data());
        _exit(127);
    }
    close(out_pipe[1]);
    close(err_pipe[1]);

    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    bool out_open = true, err_open = true;
    while (out_open || err_open) {
        int left = (int)std::chrono::duration_cast<std::chrono::milliseconds>(
                       deadline - std::chrono::steady_clock::now()).count();
        if (left <= 0) {
            a.timed_out = true;
            kill(pid, SIGKILL);
            break;
        }
        pollfd fds[2] = {{out_pipe[0], POLLIN, 0}, {err_pipe[0], POLLIN, 0}};
        if (poll(fds, 2, left) < 0 && errno != EINTR) break;
        if (out_open && (fds[0].revents & (POLLIN | POLLHUP | POLLERR))) drain(out_pipe[0], a.out, out_open);
        if (err_open && (fds[1].revents & (POLLIN | POLLHUP | POLLERR))) drain(err_pipe[0], a.err, err_open);
    }
    close(out_pipe[0]);
    close(err_pipe[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (WIFEXITED(status)) a.exit_status = WEXITSTATUS(status);
    split_answer(a);
    return a;
}

Picture::Picture(const std::string &png)
{
    if (!png.empty())
        im_.reset(gdImageCreateFromPngPtr((int)png.size(), const_cast<char *>(png.data())));
}

int Picture::width() const { return gdImageSX(im_.get()); }
int Picture::height() const { return gdImageSY(im_.get()); }
bool Picture::is_palette() const { return !gdImageTrueColor(im_.get()); }
int Picture::colors() const { return gdImageColorsTotal(im_.get()); }
int Picture::index(int x, int y) const { return gdImageGetPixel(im_.get(), x, y); }

uint32_t Picture::palette_rgb(int entry) const
{
    gdImagePtr im = im_.get();
    return cgi::rgb(gdImageRed(im, entry), gdImageGreen(im, entry), gdImageBlue(im, entry));
}

uint32_t Picture::rgb(int x, int y) const { return palette_rgb(index(x, y)); }

}  // namespace cgi
