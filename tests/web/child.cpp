// Child processes for the web tests; see child.h.
#include "child.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace web {

namespace {

using Clock = std::chrono::steady_clock;

int millis_left(Clock::time_point deadline)
{
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return left.count() > 0 ? (int)left.count() : 0;
}

}  // namespace

Child::Child(const std::vector<std::string> &argv)
{
    int pipe_fds[2];
    if (argv.empty() || pipe(pipe_fds) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {
        setpgid(0, 0);
        int null_in = open("/dev/null", O_RDONLY);
        dup2(null_in, 0);
        dup2(pipe_fds[1], 1);
        close(pipe_fds[0]);
        close(pipe_fds[1]);
        std::vector<char *> args;
        for (const std::string &a : argv) args.push_back(const_cast<char *>(a.c_str()));
        args.push_back(nullptr);
        execvp(args[0], args.data());
        _exit(127);
    }
    close(pipe_fds[1]);
    if (pid_ < 0) {
        close(pipe_fds[0]);
        return;
    }
    // Set here as well, so a signal sent before the child ran its first line still finds the group.
    setpgid(pid_, pid_);
    out_ = pipe_fds[0];
}

Child::~Child()
{
    if (pid_ > 0) {
        kill(-pid_, SIGKILL);
        if (!reaped_) waitpid(pid_, nullptr, 0);
    }
    if (out_ >= 0) close(out_);
}

bool Child::fill(int timeout_ms)
{
    if (out_ < 0) return false;
    pollfd fd = {out_, POLLIN, 0};
    if (poll(&fd, 1, timeout_ms) <= 0) return false;
    char buf[65536];
    ssize_t n = read(out_, buf, sizeof buf);
    if (n <= 0) {
        if (n < 0 && errno == EINTR) return true;
        close(out_);
        out_ = -1;
        return false;
    }
    pending_.append(buf, (std::size_t)n);
    return true;
}

bool Child::read_line(std::string &line, int timeout_ms)
{
    auto deadline = Clock::now() + std::chrono::milliseconds(timeout_ms);
    std::size_t end;
    while ((end = pending_.find('\n')) == std::string::npos)
        if (!fill(millis_left(deadline))) return false;
    line = pending_.substr(0, end);
    pending_.erase(0, end + 1);
    return true;
}

std::string Child::read_all(int timeout_ms)
{
    auto deadline = Clock::now() + std::chrono::milliseconds(timeout_ms);
    while (fill(millis_left(deadline))) {
    }
    std::string all;
    all.swap(pending_);
    return all;
}

int Child::wait(int timeout_ms)
{
    if (pid_ <= 0) return -1;
    auto deadline = Clock::now() + std::chrono::milliseconds(timeout_ms);
    while (!reaped_) {
        int status = 0;
        pid_t got = waitpid(pid_, &status, WNOHANG);
        if (got == pid_) {
            reaped_ = true;
            status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        } else if (got < 0 || millis_left(deadline) == 0) {
            return -1;
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }
    return status_;
}

int Child::stop(int sig, int timeout_ms, bool whole_group)
{
    if (pid_ > 0 && !reaped_) kill(whole_group ? -pid_ : pid_, sig);
    return wait(timeout_ms);
}

bool Child::group_alive() const
{
    return pid_ > 0 && (kill(-pid_, 0) == 0 || errno == EPERM);
}

}  // namespace web
