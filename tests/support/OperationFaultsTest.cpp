#include "tests/support/OperationFaultsTest.h"

#include "tests/support/ProcessFigures.h"

#include <QFile>
#include <QProcess>
#include <QTest>

#include <unistd.h>

void OperationFaultsTest::init()
{
    m_descriptors = descriptorCount();
}

void OperationFaultsTest::cleanup()
{
    QTRY_COMPARE(descriptorCount(), m_descriptors);
}

bool OperationFaultsTest::isRoot()
{
    return ::geteuid() == 0;
}

void OperationFaultsTest::bothUsers()
{
    QTest::addColumn<bool>("ordinary");
    QTest::newRow("ordinary user") << true;
    if (isRoot()) {
        QTest::newRow("root") << false;
    }
}

QByteArray OperationFaultsTest::bytes(const QString& path)
{
    return QFile::encodeName(path);
}

int OperationFaultsTest::differences(const QString& one, const QString& other)
{
    return QProcess::execute("diff", {"-r", "--no-dereference", one, other});
}
