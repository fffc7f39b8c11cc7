// A child process of the web tests: started from an argument list in a process group of its own,
// its standard output read line by line or to the end, stopped by a signal to the whole group.
// Destroying it kills whatever is left of the group, so a failed test leaves no server behind.
#ifndef WEB_CHILD_H
#define WEB_CHILD_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace web {

class Child {
public:
    explicit Child(const std::vector<std::string> &argv);
    ~Child();
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    bool started() const { return pid_ > 0; }
    // The next line of standard output (without its line feed); false at the end or the timeout.
    bool read_line(std::string &line, int timeout_ms);
    // Everything on standard output until it closes or the timeout passes.
    std::string read_all(int timeout_ms);
    // Sends `sig` to the whole group (as a terminal's Ctrl-C does) or to the child alone, and
    // waits for the child: its exit status, 128 + the signal that ended it, or -1 when it had not
    // ended within the timeout.
    int stop(int sig, int timeout_ms, bool whole_group = true);
    // Waits for the child alone: as stop, without a signal.
    int wait(int timeout_ms);
    // True while any process of the group is alive.
    bool group_alive() const;

private:
    bool fill(int timeout_ms);  // reads once; false at the end or the timeout

    pid_t pid_ = -1;
    int out_ = -1;
    int status_ = -1;
    bool reaped_ = false;
    std::string pending_;
};

}  // namespace web

#endif
