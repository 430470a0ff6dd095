#include "tests/support/ObjectCount.h"

#include <QObject>

#include <atomic>

// Qt's hooks for tools that watch objects. The names of the places are in a private header.
extern Q_CORE_EXPORT quintptr qtHookData[];

namespace {

constexpr int addHook = 3;
constexpr int removeHook = 4;

std::atomic<int> count{0};

void added(QObject* /*object*/)
{
    count.fetch_add(1, std::memory_order_relaxed);
}

void removed(QObject* /*object*/)
{
    count.fetch_sub(1, std::memory_order_relaxed);
}

} // namespace

void startObjectCount()
{
    count = 0;
    qtHookData[addHook] = reinterpret_cast<quintptr>(&added);
    qtHookData[removeHook] = reinterpret_cast<quintptr>(&removed);
}

int objectCount()
{
    return count.load(std::memory_order_relaxed);
}
