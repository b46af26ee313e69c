#include "tests/support/main.h"

#include "tests/plugin/fixture.h"

const std::vector<FileOption> fileOptions = {{"plugin", &pluginPath}};
