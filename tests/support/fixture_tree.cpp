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

}  // namespace fixture
