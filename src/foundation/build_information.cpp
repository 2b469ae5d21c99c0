// What every unit block ends with: the version of the library that the block belongs to.
#include "foundation/frame.h"

constinit const BuildInformation TheBuildInformation = {"libdov0610 " DOV0_VERSION};
