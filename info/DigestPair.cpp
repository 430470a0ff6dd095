#include "info/DigestPair.h"

#include <chrono>
#include <sched.h>
#include <system_error>

namespace {

// Starting a thread costs about as much as a block.
constexpr int blocksBeforePartner = 8;

// About the time that two blocks take. Waking a thread costs a tenth of a block, so neither side goes to
// sleep while the other is expected at once; longer than that it keeps no core busy.
constexpr std::chrono::microseconds awakeTime(100);

bool hasSecondCore()
{
    cpu_set_t cores;
    CPU_ZERO(&cores);
    return ::sched_getaffinity(0, sizeof cores, &cores) == 0 && CPU_COUNT(&cores) > 1;
}

} // namespace

DigestPair::DigestPair()
    : m_blocksUntilPartner(hasSecondCore() ? blocksBeforePartner : -1)
{
}

DigestPair::~DigestPair()
{
    if (m_partner.joinable()) {
        set(Quit);
        m_partner.join();
    }
}

void DigestPair::add(const char* block, int bytes)
{
    if (m_blocksUntilPartner >= 0 && m_blocksUntilPartner-- == 0) {
        startPartner();
    }
    if (!m_partner.joinable()) {
        m_md5.addData(block, bytes);
        m_sha1.addData(block, bytes);
        return;
    }
    m_block = block;
    m_bytes = bytes;
    set(Offered);
    m_md5.addData(block, bytes);
    int expected = Offered;
    if (m_state.compare_exchange_strong(expected, Idle)) {
        m_sha1.addData(block, bytes);
    } else {
        waitUntil(m_callerSleeps, [this] { return m_state == Done; });
    }
}

void DigestPair::startPartner()
{
    try {
        m_partner = std::thread(&DigestPair::runPartner, this);
    } catch (const std::system_error&) {
        // No thread is to be had: both digests stay with the caller.
    }
}

void DigestPair::runPartner()
{
    for (;;) {
        waitUntil(m_partnerSleeps, [this] { return m_state == Offered || m_state == Quit; });
        int expected = Offered;
        if (m_state.compare_exchange_strong(expected, Taken)) {
            m_sha1.addData(m_block, m_bytes);
            set(Done);
        } else if (expected == Quit) {
            return;
        }
    }
}

void DigestPair::set(State state)
{
    // Both orders matter: whoever goes to sleep says so before it looks at the state for the last time.
    m_state = state;
    if (m_callerSleeps || m_partnerSleeps) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_changed.notify_all();
    }
}

template <typename Condition>
void DigestPair::waitUntil(std::atomic<bool>& isAsleep, Condition condition)
{
    const auto asleepFrom = std::chrono::steady_clock::now() + awakeTime;
    while (!condition()) {
        if (std::chrono::steady_clock::now() < asleepFrom) {
            std::this_thread::yield();
            continue;
        }
        std::unique_lock<std::mutex> lock(m_mutex);
        isAsleep = true;
        m_changed.wait(lock, condition);
        isAsleep = false;
    }
}
