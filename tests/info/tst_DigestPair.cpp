#include "info/DigestPair.h"

#include "tests/support/ProcessFigures.h"
#include "tests/support/TestMain.h"

#include <QRandomGenerator>

#include <sched.h>

namespace {

QByteArray randomBytes(int count)
{
    QByteArray bytes(count, '\0');
    QRandomGenerator generator(7);
    for (char& byte : bytes) {
        byte = static_cast<char>(generator.bounded(256));
    }
    return bytes;
}

void compare(const DigestPair& pair, const QByteArray& content)
{
    QCOMPARE(pair.md5Hex(), QCryptographicHash::hash(content, QCryptographicHash::Md5).toHex());
    QCOMPARE(pair.sha1Hex(), QCryptographicHash::hash(content, QCryptographicHash::Sha1).toHex());
}

/// Lets the calling thread, and what it starts, run on one core only while it lives.
class OneCore
{
public:
    OneCore()
    {
        ::sched_getaffinity(0, sizeof m_before, &m_before);
        cpu_set_t one;
        CPU_ZERO(&one);
        for (std::size_t core = 0; core < CPU_SETSIZE; ++core) {
            if (CPU_ISSET(core, &m_before)) {
                CPU_SET(core, &one);
                break;
            }
        }
        ::sched_setaffinity(0, sizeof one, &one);
    }
    ~OneCore() { ::sched_setaffinity(0, sizeof m_before, &m_before); }
    OneCore(const OneCore&) = delete;
    OneCore& operator=(const OneCore&) = delete;
    bool hadMore() const { return CPU_COUNT(&m_before) > 1; }

private:
    cpu_set_t m_before{};
};

} // namespace

class TestDigestPair : public QObject
{
    Q_OBJECT

private slots:
    void digestsOfBlocks_data()
    {
        QTest::addColumn<int>("blocks");
        QTest::addColumn<int>("bytes");
        QTest::newRow("nothing") << 0 << 0;
        QTest::newRow("one byte") << 1 << 1;
        QTest::newRow("before the partner") << 8 << 1000;
        QTest::newRow("first of the partner") << 9 << 1000;
        QTest::newRow("full blocks") << 200 << 32768;
        QTest::newRow("many tiny ones") << 50000 << 1;
    }
    void digestsOfBlocks()
    {
        QFETCH(int, blocks);
        QFETCH(int, bytes);
        const QByteArray content = randomBytes(blocks * bytes);
        DigestPair pair;
        for (int i = 0; i < blocks; ++i) {
            pair.add(content.constData() + i * bytes, bytes);
        }
        compare(pair, content);
    }

    void bufferMayBeUsedAgainAtOnce()
    {
        const QByteArray content = randomBytes(100 * 5000);
        DigestPair pair;
        char block[5000];
        for (int i = 0; i < 100; ++i) {
            std::copy_n(content.constData() + i * 5000, 5000, block);
            pair.add(block, 5000);
            std::fill_n(block, 5000, 'x');
        }
        compare(pair, content);
    }

    void waitsForASlowCaller()
    {
        const QByteArray content = randomBytes(30 * 1000);
        DigestPair pair;
        for (int i = 0; i < 30; ++i) {
            pair.add(content.constData() + i * 1000, 1000);
            QTRY_VERIFY(otherThreadsWait()); // the partner has gone to sleep
        }
        compare(pair, content);
    }

    void digestsMayBeTakenInBetween()
    {
        const QByteArray content = randomBytes(40 * 1000);
        DigestPair pair;
        for (int i = 0; i < 40; ++i) {
            pair.add(content.constData() + i * 1000, 1000);
            compare(pair, content.left((i + 1) * 1000));
        }
    }

    void partnerComesWithLongInputAndGoesWithThePair()
    {
        if (OneCore().hadMore()) {
            const int threads = threadCount();
            {
                DigestPair pair;
                const QByteArray block(1000, 'x');
                for (int i = 0; i < 8; ++i) {
                    pair.add(block.constData(), 1000);
                }
                QCOMPARE(threadCount(), threads);
                pair.add(block.constData(), 1000);
                QCOMPARE(threadCount(), threads + 1);
            }
            QCOMPARE(threadCount(), threads);
        } else {
            QSKIP("needs two cores");
        }
    }

    void oneCoreNeedsNoPartner()
    {
        const OneCore core;
        const int threads = threadCount();
        const QByteArray content = randomBytes(40 * 1000);
        DigestPair pair;
        for (int i = 0; i < 40; ++i) {
            pair.add(content.constData() + i * 1000, 1000);
            QCOMPARE(threadCount(), threads);
        }
        compare(pair, content);
    }
};

VANTREL_TEST_MAIN(TestDigestPair)
#include "tst_DigestPair.moc"
