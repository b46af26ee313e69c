#include "bench/calls/things.h"

namespace bench::calls {

#define BENCH_DEFINE(name, ...) Thing name = __VA_ARGS__;
BENCH_THINGS(BENCH_DEFINE)
#undef BENCH_DEFINE

}  // namespace bench::calls
