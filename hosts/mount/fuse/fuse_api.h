#pragma once

/// The one place that names the version of libfuse's interface.
#define FUSE_USE_VERSION 314
#include <fuse_lowlevel.h>
