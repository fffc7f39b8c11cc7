// Fuzz target: the query string, through user_input and the whole composition, on a tree that
// holds every reference file. An input that starts with a NUL byte is a request without a query
// string; otherwise the query ends at the first NUL, as an environment value does. Canvases cost
// time in proportion to their pixels and add no path of their own (the end-to-end table has the
// largest), so queries for maps of 641 to 8192 pixels are not run.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz_tree.h"
#include "aws_info_get.h"
#include "aws_rain_data_get.h"
#include "color_table.h"
#include "grid_map_inf.h"
#include "korean_text.h"
#include "rdr_sfc_pty_get.h"
#include "user_input.h"
#include "view.h"

namespace {

constexpr int LARGEST_RUN_SIZE = 640;
constexpr int LARGEST_CANVAS = 8192;

bool affordable(const char *query)
{
    var = INPUT_VAR{};
    setenv("QUERY_STRING", query, 1);
    user_input();
    return var.size <= LARGEST_RUN_SIZE || var.size > LARGEST_CANVAS;
}

}  // namespace

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
    if (!affordable(query.c_str())) return -1;
    fuzz::run_program(query.c_str());
    return 0;
}
