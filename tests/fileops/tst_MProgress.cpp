#include "fileops/MProgress.h"

#include "app/aGlobal.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>

class TestMProgress : public QObject
{
    Q_OBJECT

private slots:
    void smoke();
};

void TestMProgress::smoke()
{
    TestDir dir;
    dir.file(QStringLiteral("a/b/c.txt"), QByteArray(3000000, 'x'));
    dir.file(QStringLiteral("a/d.txt"), "hello");
    dir.link(QStringLiteral("a/l"), QStringLiteral("nowhere"));
    dir.fifo(QStringLiteral("a/p"));
    dir.folder(QStringLiteral("to"));
    QWidget panel;
    panel.show();
    gslDragList = QStringList{dir.path(QStringLiteral("a"))};
    gsDropBase = dir.path(QStringLiteral("to"));
    QPointer<MProgress> dialog = new MProgress(&panel, OpCopy);
    BoxAnswers answers;
    dialog->exec();
    QCOMPARE(dir.tree(QStringLiteral("to/a")), dir.tree(QStringLiteral("a")));
    QTRY_VERIFY(dialog.isNull());
}

VANTREL_TEST_MAIN(TestMProgress)
#include "tst_MProgress.moc"
