// A program with a data race, on purpose: scripts/tsan-filter has to find it, or the check is worth nothing.

#include <thread>

namespace {
int racedOn = 0;
}

int main()
{
    std::thread other([] { ++racedOn; });
    ++racedOn;
    other.join();
    return 0;
}
