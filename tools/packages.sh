# The Debian packages the project needs, in one place: every script that installs something
# sources this file and names groups, never packages, so that no script can fall behind the
# others (the demo once built without ISA-L's headers on a fresh machine).
#   source tools/packages.sh; rdr_install_packages build sample serve
# Building the program: the compiler, libgd and the static archives it is linked from, zlib, ISA-L.
RDR_BUILD_PACKAGES=(build-essential cmake pkg-config libgd-dev zlib1g-dev libfontconfig-dev libfreetype-dev
  libpng-dev libexpat1-dev libbrotli-dev libisal-dev fonts-baekmuk)
# Writing the sample tree: the coastlines come from gmt's GSHHG data.
RDR_SAMPLE_PACKAGES=(gmt gmt-gshhg-low)
# Serving the viewer page and the program (tools/serve, tools/demo, tools/load).
RDR_SERVE_PACKAGES=(lighttpd)
# The tests: GoogleTest, a JSON reader for the point program's answers, pngcheck for the load
# run; the page's tests fetch with curl and drive Chromium.
RDR_TEST_PACKAGES=(libgtest-dev nlohmann-json3-dev pngcheck)
RDR_WEB_PACKAGES=(curl chromium)
# The web tests' node and npm, for a machine without a node of its own.
RDR_NODE_PACKAGES=(nodejs npm)
# The fuzz build: clang with libFuzzer and the sanitizer runtimes.
RDR_FUZZ_PACKAGES=(clang-14 libclang-rt-14-dev)

# Installs what is missing of the named groups (build, sample, serve, test, web, node, fuzz).
rdr_install_packages() {
  local group list wanted=()
  for group in "$@"; do
    list="RDR_${group^^}_PACKAGES"
    declare -p "$list" >/dev/null 2>&1 || { echo "tools/packages.sh: no package group $group" >&2; return 2; }
    list="$list[@]"
    wanted+=("${!list}")
  done
  bash "$(dirname "${BASH_SOURCE[0]}")/ensure_packages.sh" "${wanted[@]}"
}
