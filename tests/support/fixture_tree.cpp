#include "fixture_tree.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "rdr_paths.h"

namespace fixture {

void reset_root()
{
    namespace fs = std::filesystem;
    fs::path root = rdr_root();
    // A mistaken configuration must never make a test wipe a real tree.
    ASSERT_TRUE(root.is_absolute() && root.string().size() > 8 &&
                root.filename().string().find("root") != std::string::npos)
        << "refusing to wipe " << root;
    std::error_code ec;
    fs::remove_all(root, ec);
    fs::create_directories(root);
}

void install_font()
{
    ASSERT_TRUE(write_font()) << "the Korean font " << kKoreanFont << " is not installed";
}

void write_simple_catalogue(int nx, int ny, int sx, int sy)
{
    ASSERT_TRUE(write_map_catalogue(
        {"# code:nx:ny:sx:sy", "HR:" + std::to_string(nx) + ":" + std::to_string(ny) + ":" +
                                   std::to_string(sx) + ":" + std::to_string(sy)}));
}

}  // namespace fixture
