#pragma once

#include <QCryptographicHash>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

/// The MD5 and the SHA-1 digest of the same blocks. Where the process may run on a second core, a thread of
/// its own (the partner) takes the SHA-1 of a block while the caller takes its MD5; a block that the partner
/// has not begun by then is the caller's again, so that a busy machine never makes the pair slower than one
/// thread is. Used from one thread only.
class DigestPair
{
public:
    DigestPair();
    /// Ends the partner.
    ~DigestPair();
    DigestPair(const DigestPair&) = delete;
    DigestPair& operator=(const DigestPair&) = delete;

    /// Adds a block to both digests. Both are done with it on return.
    void add(const char* block, int bytes);

    /// @return digests of everything added so far, as lower-case hexadecimal text
    QByteArray md5Hex() const { return m_md5.result().toHex(); }
    QByteArray sha1Hex() const { return m_sha1.result().toHex(); }

private:
    /// Of the block that the partner may take.
    enum State { Idle, Offered, Taken, Done, Quit };

    void startPartner();
    void runPartner();
    void set(State state);
    template <typename Condition>
    void waitUntil(std::atomic<bool>& isAsleep, Condition condition);

    QCryptographicHash m_md5{QCryptographicHash::Md5};
    QCryptographicHash m_sha1{QCryptographicHash::Sha1}; ///< of whoever took the block
    const char* m_block = nullptr;
    int m_bytes = 0;
    int m_blocksUntilPartner; ///< none is started for a short file; below 0 where there is, or will be, none
    std::atomic<int> m_state{Idle};
    std::atomic<bool> m_callerSleeps{false};
    std::atomic<bool> m_partnerSleeps{false};
    std::mutex m_mutex;
    std::condition_variable m_changed; ///< m_state, while the other side sleeps
    std::thread m_partner;
};
