// Fuzz target: the query string, through user_input and the whole composition, on a tree that
// holds every reference file. An input that starts with a NUL byte is a request without a query
// string; otherwise the query ends at the first NUL, as an environment value does.
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
        fuzz::run_program(nullptr);
        return 0;
    }
    query.resize(query.find('\0') == std::string::npos ? query.size() : query.find('\0'));
    fuzz::run_program(query.c_str());
    return 0;
}
