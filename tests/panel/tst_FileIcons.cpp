#include "panel/FileIcons.h"
#include "panel/LoadingIconProvider.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

namespace {

QImage picture(const QIcon& icon)
{
    return icon.pixmap(16, 16).toImage();
}

/// What the standard file system model shows for an entry.
QImage standardPicture(const QFileInfo& info)
{
    const QFileIconProvider provider;
    const QIcon icon = provider.icon(info);
    return picture(!icon.isNull() ? icon
            : info.isDir()        ? provider.icon(QFileIconProvider::Folder)
                                  : provider.icon(QFileIconProvider::File));
}

} // namespace

class TestFileIcons : public QObject
{
    Q_OBJECT

private slots:
    void samePicture_data();
    void samePicture();
    void folderAndFileDiffer();
    void rememberedIconIsTheSame();
    void nameThatChangesItsKind();
    void changedFileIsLookedUpAgain();
    void oneForTheProcess();
    void manyFilesAreBounded();

    void loadingGivesNoIcons();
    void loadingTypeIsNeverEmptyAndChanges();
};

void TestFileIcons::samePicture_data()
{
    QTest::addColumn<QString>("relative");
    for (const char* name : {"folder", "file", "text.txt", "page.html", "picture.png", "archive.tar.gz",
             "code.cpp", "program", "empty", ".hidden", ".hiddenfolder", "<b>x</b>", "%1",
             "name\nwith newline", "link to file", "link to folder", "dangling", "fifo", "socket",
             "no such entry", "UPPER.PNG", "a.b.c", "trailing."}) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
    QTest::newRow("device") << QStringLiteral("/dev/null");
    QTest::newRow("root") << QStringLiteral("/");
    QTest::newRow("home") << QDir::homePath();
    QTest::newRow("parent entry") << QStringLiteral("folder/..");
    QTest::newRow("255 bytes") << QString(255, QLatin1Char('n'));
}

void TestFileIcons::samePicture()
{
    QFETCH(QString, relative);
    const TestDir dir;
    dir.folder(QStringLiteral("folder"));
    dir.folder(QStringLiteral(".hiddenfolder"));
    for (const char* name : {"file", "text.txt", "page.html", "archive.tar.gz", "code.cpp", ".hidden", "%1",
             "name\nwith newline", "UPPER.PNG", "a.b.c", "trailing."}) {
        dir.file(QLatin1String(name), "some text");
    }
    dir.file(QStringLiteral("picture.png"), "\x89PNG\r\n\x1a\n");
    dir.file(QStringLiteral("program"), "#!/bin/sh\n", 0755);
    dir.file(QStringLiteral("empty"));
    dir.file(QString(255, QLatin1Char('n')));
    dir.link(QStringLiteral("link to file"), QStringLiteral("file"));
    dir.link(QStringLiteral("link to folder"), QStringLiteral("folder"));
    dir.link(QStringLiteral("dangling"), QStringLiteral("nowhere"));
    dir.fifo(QStringLiteral("fifo"));
    dir.socket(QStringLiteral("socket"));
    const QFileInfo info(relative.startsWith('/') ? relative : dir.path(relative));
    const QImage expected = standardPicture(info);
    QVERIFY(!expected.isNull());
    QCOMPARE(picture(FileIcons::instance().icon(info)), expected);
    QCOMPARE(picture(FileIcons::instance().icon(info)), expected);
}

void TestFileIcons::folderAndFileDiffer()
{
    const TestDir dir;
    const QFileInfo folder(dir.folder(QStringLiteral("folder")));
    const QFileInfo file(dir.file(QStringLiteral("file")));
    QVERIFY(!picture(FileIcons::instance().icon(file)).isNull());
    QVERIFY(picture(FileIcons::instance().icon(folder)) != picture(FileIcons::instance().icon(file)));
}

void TestFileIcons::rememberedIconIsTheSame()
{
    const TestDir dir;
    const QFileInfo info(dir.file(QStringLiteral("file")));
    const QIcon first = FileIcons::instance().icon(info);
    QCOMPARE(FileIcons::instance().icon(info).cacheKey(), first.cacheKey());
}

void TestFileIcons::nameThatChangesItsKind()
{
    const TestDir dir;
    const QString path = dir.file(QStringLiteral("it"));
    dir.setTimes(QStringLiteral("it"), 1000);
    const QImage file = picture(FileIcons::instance().icon(QFileInfo(path)));
    QVERIFY(QFile::remove(path));
    dir.folder(QStringLiteral("it"));
    dir.setTimes(QStringLiteral("it"), 1000);
    const QFileInfo folder(path);
    QCOMPARE(picture(FileIcons::instance().icon(folder)), picture(QFileIconProvider().icon(folder)));
    QVERIFY(picture(FileIcons::instance().icon(folder)) != file);
}

void TestFileIcons::changedFileIsLookedUpAgain()
{
    // A theme can look into files: what it saw may differ after a change.
    const TestDir dir;
    const QString path = dir.file(QStringLiteral("it"), "text");
    dir.setTimes(QStringLiteral("it"), 1000);
    static_cast<void>(FileIcons::instance().icon(QFileInfo(path)));
    dir.setTimes(QStringLiteral("it"), 2000);
    const QFileInfo info(path);
    QCOMPARE(picture(FileIcons::instance().icon(info)), picture(QFileIconProvider().icon(info)));
}

void TestFileIcons::oneForTheProcess()
{
    QCOMPARE(&FileIcons::instance(), &FileIcons::instance());
    QCOMPARE(FileIcons::instance().parent(), qApp);
}

void TestFileIcons::manyFilesAreBounded()
{
    const TestDir dir;
    const QFileInfo real(dir.file(QStringLiteral("first")));
    const QIcon first = FileIcons::instance().icon(real);
    for (int i = 0; i < 5000; ++i) {
        static_cast<void>(FileIcons::instance().icon(QFileInfo(dir.path(QString::number(i)))));
    }
    QCOMPARE(picture(FileIcons::instance().icon(real)), picture(first));
}

void TestFileIcons::loadingGivesNoIcons()
{
    const TestDir dir;
    const LoadingIconProvider provider;
    QVERIFY(provider.icon(QFileIconProvider::Folder).isNull());
    QVERIFY(provider.icon(QFileIconProvider::File).isNull());
    QVERIFY(provider.icon(QFileInfo(dir.path())).isNull());
}

void TestFileIcons::loadingTypeIsNeverEmptyAndChanges()
{
    const TestDir dir;
    const QFileInfo info(dir.path());
    LoadingIconProvider provider;
    QSet<QString> types;
    for (int i = 0; i < 100; ++i) {
        QVERIFY(!provider.type(info).isEmpty());
        QCOMPARE(provider.type(info), provider.type(QFileInfo(QStringLiteral("/nowhere"))));
        types.insert(provider.type(info));
        provider.nextRound();
    }
    QCOMPARE(types.size(), 100);
}

VANTREL_TEST_MAIN(TestFileIcons)
#include "tst_FileIcons.moc"
