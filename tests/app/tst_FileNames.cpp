#include "app/FileNames.h"

#include "app/PosixHandles.h"
#include "app/ReadConfig.h"
#include "app/aGlobal.h"
#include "info/WalkEntries.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/ModelFixture.h"
#include "tests/support/Settings.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QTextCodec>

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Makes an entry with a name of any bytes, and of a size by which it is known again.
bool makeEntry(const QByteArray& path, int bytes)
{
    const Descriptor file(::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
    return file.number() >= 0 && ::ftruncate(file.number(), bytes) == 0;
}

QList<QByteArray> walked(const QByteArray& folder)
{
    const std::atomic<int> running(1);
    QList<QByteArray> names;
    FolderListing listing(folder.constData());
    WalkEntries entries(listing, running);
    while (entries.next()) {
        names.append(entries.name());
    }
    std::sort(names.begin(), names.end());
    return names;
}

const QList<QByteArray> textNames{"z", "\xc3\xa9", "e\xcc\x81", "\xef\xbf\xbd", "x\xef\xbf\xbd",
    "\xef\xbb\xbfz", "\xf0\x9f\x98\x80", "\xef\xbf\xbe", "\xc2\x80"};
const QList<QByteArray> otherNames{
    "\xe9", "\xc3", "x\xe9", "cut \xe2\x82", "\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xff", "\x80"};

} // namespace

/// Names on disk in a locale whose encoding is not UTF-8.
class TestFileNames : public QObject, protected ModelFixture
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init() { start(); }
    void cleanup() { end(); }

    void namesAreUtf8();
    void isFileNameOfBytes();
    void rowsMeanWhatTheyShow();
    void folderThatIsNotText();
    void diskUsageCountsTheSame();
    void settingsAreInTheLocalesEncoding();
    void calledAgain();
};

void TestFileNames::initTestCase()
{
    resetSettings();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    useUtf8FileNames();
}

void TestFileNames::namesAreUtf8()
{
    QCOMPARE(QFile::decodeName("\xc3\xa9"), QStringLiteral("\u00e9"));
    QCOMPARE(QFile::encodeName(QStringLiteral("\u00e9\u20ac")), QByteArray("\xc3\xa9\xe2\x82\xac"));
}

void TestFileNames::isFileNameOfBytes()
{
    for (const QByteArray& name : textNames) {
        QVERIFY2(isFileName(name.constData(), std::strlen(name)), name.toPercentEncoding().constData());
    }
    for (const QByteArray& name : otherNames) {
        QVERIFY2(!isFileName(name.constData(), std::strlen(name)), name.toPercentEncoding().constData());
    }
}

// What is no text is not there, and takes no place of anything else.
void TestFileNames::rowsMeanWhatTheyShow()
{
    const QByteArray folder = QFile::encodeName(dir->folder(QStringLiteral("names")));
    int bytes = 0;
    for (const QByteArray& name : otherNames + textNames) {
        QVERIFY(makeEntry(folder + '/' + name, ++bytes));
    }
    load(QFile::decodeName(folder));
    QStringList expected{QStringLiteral("..")};
    for (int i = 0; i < textNames.size(); ++i) {
        // What begins with a byte order mark would lose it.
        const QString name = QString::fromUtf8("x" + textNames.at(i)).mid(1);
        expected.append(name);
        struct stat info;
        const QByteArray path = QFile::encodeName(model->filePath(row(name)));
        QCOMPARE(path, folder + '/' + textNames.at(i));
        QCOMPARE(::lstat(path.constData(), &info), 0);
        QCOMPARE(info.st_size, otherNames.size() + i + 1);
        QCOMPARE(model->size(row(name)), info.st_size);
    }
    QStringList shown = rowNames(*model, root);
    std::sort(shown.begin(), shown.end());
    std::sort(expected.begin(), expected.end());
    QCOMPARE(shown, expected);
}

// Decoded with a replacement, the name of the first would be that of the second.
void TestFileNames::folderThatIsNotText()
{
    const QByteArray folder = QFile::encodeName(dir->folder(QStringLiteral("folders"))) + '/';
    for (const char* name : {"x\xe9", "x\xef\xbf\xbd"}) {
        QCOMPARE(::mkdir((folder + name).constData(), 0755), 0);
        QVERIFY(makeEntry(folder + name + "/in " + QByteArray::number(int(std::strlen(name))), 1));
    }
    load(dir->path(QStringLiteral("folders")), treeFilter, 1);
    QCOMPARE(rowNames(*model, root), QStringList{QStringLiteral("x\ufffd")});
    load(dir->path(QStringLiteral("folders")));
    QCOMPARE(rowNames(*model, root), (QStringList{"..", QStringLiteral("x\ufffd")}));
    load(dir->path(QStringLiteral("folders/x\ufffd")));
    QCOMPARE(rowNames(*model, root), (QStringList{"..", "in 4"}));
}

void TestFileNames::diskUsageCountsTheSame()
{
    const QByteArray folder = QFile::encodeName(dir->folder(QStringLiteral("names")));
    for (const QByteArray& name : otherNames + textNames) {
        QVERIFY(makeEntry(folder + '/' + name, 1));
    }
    QList<QByteArray> expected = textNames;
    std::sort(expected.begin(), expected.end());
    QCOMPARE(walked(folder), expected);
}

void TestFileNames::settingsAreInTheLocalesEncoding()
{
    QCOMPARE(localeCodec()->name(), QByteArray("ISO-8859-1"));
    ReadConfig(dir->file(QStringLiteral(".Vantrel"), "icon=/\xe4.png\ndrive=/\xc3\xa9=\xe9\n"));
    QCOMPARE(gsAppIcon, QStringLiteral("/\u00e4.png"));
    QCOMPARE(gstDrives.constLast().path, QStringLiteral("/\u00c3\u00a9"));
    QCOMPARE(gstDrives.constLast().label, QStringLiteral("\u00e9"));
}

void TestFileNames::calledAgain()
{
    useUtf8FileNames();
    QCOMPARE(localeCodec()->name(), QByteArray("ISO-8859-1"));
    namesAreUtf8();
}

VANTREL_TEST_MAIN(TestFileNames)
#include "tst_FileNames.moc"
