// Compiled by a test with a name that there is, and with one that there is not.
#include "hosts/cli/commands/argument_name.h"

constexpr vtdirect_cli::ArgumentName theOption = NAME_OF_OPTION;
