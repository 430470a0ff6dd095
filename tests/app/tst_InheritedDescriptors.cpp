#include "app/InheritedDescriptors.h"

#include "tests/support/ProcessFigures.h"
#include "tests/support/TestMain.h"

#include <array>
#include <fcntl.h>
#include <unistd.h>

namespace {

bool isKept(int descriptor)
{
    return (::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0;
}

} // namespace

class TestInheritedDescriptors : public QObject
{
    Q_OBJECT

private slots:
    void allButThreeAreKept();
};

void TestInheritedDescriptors::allButThreeAreKept()
{
    std::array<int, 2> pipe{};
    QCOMPARE(::pipe(pipe.data()), 0); // NOLINT(android-cloexec-pipe): as if inherited
    const int far = ::dup2(pipe[1], 900);
    QCOMPARE(far, 900);
    std::array<bool, 3> before{};
    for (int i = 0; i < 3; ++i) {
        before.at(static_cast<std::size_t>(i)) = isKept(i);
    }
    const int count = descriptorCount();
    keepInheritedDescriptors();
    for (const int descriptor : {pipe[0], pipe[1], far}) {
        QVERIFY(isKept(descriptor));
    }
    const char byte = 'x'; // still usable
    QCOMPARE(::write(far, &byte, 1), 1);
    for (const int descriptor : {pipe[0], pipe[1], far}) {
        ::close(descriptor);
    }
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(isKept(i), before.at(static_cast<std::size_t>(i)));
    }
    QCOMPARE(descriptorCount(), count - 3); // it leaves none of its own
}

VANTREL_TEST_MAIN(TestInheritedDescriptors)
#include "tst_InheritedDescriptors.moc"
