// A library as one built for another Qt looks to those who load it. Whoever does ends here.

#include <cstdlib>

extern "C" int qtCoreStandIn();

namespace {

struct Loaded {
    Loaded() { std::_Exit(99 + qtCoreStandIn()); }
};
const Loaded loaded;

} // namespace
