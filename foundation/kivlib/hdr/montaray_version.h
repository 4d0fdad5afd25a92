#pragma once

/// The release of the library, which the build reads here. A module notes it when it is compiled.
#define MONTARAY_VERSION "0.1.0"
