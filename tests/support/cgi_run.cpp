#include "cgi_run.h"

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


std::string contents(FILE *fp)
{
    std::string text;
    char buf[65536];
    std::rewind(fp);
    for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, fp)) > 0;) text.append(buf, n);
    std::fclose(fp);
    return text;
}

}  // namespace

Answer run(const char *query, int timeout_ms, const char *tz, const char *program, long long address_space)
{
    Answer a;
    FILE *out = std::tmpfile(), *err = std::tmpfile();
    pid_t pid = out && err ? fork() : -1;
    if (pid == 0) {
        dup2(fileno(out), 1);
        dup2(fileno(err), 2);
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
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    int status = 0;
    while (pid > 0 && waitpid(pid, &status, WNOHANG) == 0) {
        if ((a.timed_out = std::chrono::steady_clock::now() > deadline)) kill(pid, SIGKILL), waitpid(pid, &status, 0);
        else usleep(500);
    }
    if (pid > 0 && WIFEXITED(status)) a.exit_status = WEXITSTATUS(status);
    if (out) a.out = contents(out);
    if (err) a.err = contents(err);
    split_answer(a);
    return a;
}

Picture::Picture(const std::string &png)
    : im_(png.empty() ? nullptr : gdImageCreateFromPngPtr((int)png.size(), const_cast<char *>(png.data())))
{
}

uint32_t Picture::palette_rgb(int entry) const
{
    return cgi::rgb(gdImageRed(im_.get(), entry), gdImageGreen(im_.get(), entry), gdImageBlue(im_.get(), entry));
}

}  // namespace cgi
