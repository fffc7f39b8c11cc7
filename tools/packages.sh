# The Debian packages the project needs, in one place for the scripts that install them.
# Building the program: the compiler, libgd and the static archives it is linked from, zlib, ISA-L.
RDR_BUILD_PACKAGES=(build-essential cmake pkg-config libgd-dev zlib1g-dev libfontconfig-dev libfreetype-dev
  libpng-dev libexpat1-dev libbrotli-dev libisal-dev fonts-baekmuk)
# Writing the sample tree: the coastlines come from gmt's GSHHG data.
RDR_SAMPLE_PACKAGES=(gmt gmt-gshhg-low)
