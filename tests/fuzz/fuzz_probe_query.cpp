// Fuzz target: the probe's query string, through user_input, the probe's own keys and the whole
// answer, on a tree that holds every reference file. An input that starts with a NUL byte is a
// request without a query string; otherwise the query ends at the first NUL, as an environment
// value does. Every query is affordable: a line has at most 2000 samples.
#include <cstdint>
#include <string>

#include "fuzz_tree.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    fuzz::make_tree(fuzz::ALL_PARTS);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size)
{
    std::string query((const char *)data, size);
    if (!query.empty() && query[0] == '\0') {
        fuzz::run_program(nullptr, rdr_probe_main);
        return 0;
    }
    query.resize(query.find('\0') == std::string::npos ? query.size() : query.find('\0'));
    fuzz::run_program(query.c_str(), rdr_probe_main);
    return 0;
}
