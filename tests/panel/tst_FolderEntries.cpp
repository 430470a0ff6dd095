#include "panel/FolderEntries.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QCollator>
#include <QDirIterator>
#include <QFileSystemModel>
#include <QSignalSpy>

#include <algorithm>

namespace {

const QDir::Filters everything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDot;

FolderEntries readFolder(const QString& path)
{
    FolderEntries entries;
    QDirIterator found(path, everything);
    while (found.hasNext()) {
        found.next();
        const QFileInfo info = found.fileInfo();
        static_cast<void>(info.isDir());
        static_cast<void>(info.size());
        static_cast<void>(info.isSymLink());
        entries.append(qMakePair(info.fileName(), info));
    }
    return entries;
}

QStringList namesOf(const FolderEntries& entries)
{
    QStringList names;
    for (const auto& entry : entries) {
        names.append(entry.first);
    }
    return names;
}

/// Row order of a model that nobody has changed anything of.
QStringList stockOrder(const QString& path)
{
    QFileSystemModel model;
    model.setFilter(everything);
    QSignalSpy loaded(&model, &QFileSystemModel::directoryLoaded);
    const QModelIndex root = model.setRootPath(path);
    if (!loaded.wait()) {
        return QStringList();
    }
    model.sort(0, Qt::DescendingOrder); // the model sorts on a change of order only
    model.sort(0, Qt::AscendingOrder);
    QStringList names;
    for (int row = 0; row < model.rowCount(root); ++row) {
        names.append(model.fileName(model.index(row, 0, root)));
    }
    return names;
}

FolderReading compared(const FolderEntries& before, const FolderEntries& after)
{
    FolderReading reading;
    reading.entries = after;
    compareFolderEntries(before, reading);
    return reading;
}

} // namespace

class TestFolderEntries : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void orderIsTheStockModels_data();
    void orderIsTheStockModels();
    void namesThatCompareEqual_data();
    void namesThatCompareEqual();
    void foldersComeFirst();
    void emptyAndSingle();

    void firstReadingIsAllNew();
    void nothingChanged();
    void orderDoesNotMatter();
    void newAndRemoved();
    void factsThatCount_data();
    void factsThatCount();
};

void TestFolderEntries::orderIsTheStockModels_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QStringList>("files");
    const QStringList numbers{
        "file1", "file2", "file10", "file020", "file100", "9", "10", "1", "a1b2", "a1b10"};
    const QStringList cases{"alpha", "Beta", "gamma", "DELTA", "_under", "Zeta", "~tilde", "-dash", "+plus"};
    const QStringList marks{".hidden", "..dots", "...", "a b", "ab", "a-b", "a_b", "a.b", "a'b", "(a)", "[a]",
        "{a}", "a,b", "a;b", "a!b", "a%1b", "<b>x</b>", "a\nb", "a\tb", " lead", "trail "};
    const QStringList letters{QString::fromUtf8("ärger"), QString::fromUtf8("Österreich"), "zebra", "apfel",
        QString::fromUtf8("straße"), "strasse2", QString::fromUtf8("éclair"), "eclair2",
        QString::fromUtf8("ñandu"), QString::fromUtf8("日本語"), QString::fromUtf8("Ελλάδα"),
        QString::fromUtf8("привет"), QString::fromUtf8("e\u0301t"), QString::fromUtf8("İstanbul"),
        QString::fromUtf8("ıgdır")};
    const QStringList pairs{QString::fromUtf8("😀 smile"), QString::fromUtf8("𝒳 math"), "plain", "Zeta",
        QString::fromUtf8("𐐀 deseret"), QString::fromUtf8("\uFFFD end"),
        // Small and capital letters that only their pairs tell to be the same.
        QString::fromUtf8("𐐨b"), QString::fromUtf8("𐐀c"), QString::fromUtf8("𐐨a")};
    const QStringList longOnes{QString(255, QLatin1Char('a')), QString(254, QLatin1Char('a')),
        QString(200, QLatin1Char('9')), QString(199, QLatin1Char('9'))};
    for (const char* locale : {"C", "en_US", "de_DE", "sv_SE"}) {
        const QByteArray prefix = QByteArray(locale) + ' ';
        const QString name = QLatin1String(locale);
        QTest::newRow(prefix + "numbers") << name << QStringList() << numbers;
        QTest::newRow(prefix + "cases") << name << QStringList() << cases;
        QTest::newRow(prefix + "marks") << name << QStringList() << marks;
        QTest::newRow(prefix + "letters") << name << QStringList() << letters;
        QTest::newRow(prefix + "beyond the basic plane") << name << QStringList() << pairs;
        QTest::newRow(prefix + "long") << name << QStringList() << longOnes;
        QTest::newRow(prefix + "folders and files")
            << name << QStringList{"zz", "Zb", "11", "8", ".git", "mid 2"} << (numbers + cases);
        QTest::newRow(prefix + "all") << name << QStringList{"Dir 1", "dir 11", "dir 2"}
                                      << (numbers.mid(0, 5) + cases + marks + letters + pairs.mid(0, 2));
    }
}

void TestFolderEntries::orderIsTheStockModels()
{
    QFETCH(QString, locale);
    QFETCH(QStringList, folders);
    QFETCH(QStringList, files);
    QLocale::setDefault(locale == QLatin1String("C") ? QLocale::c() : QLocale(locale));
    const TestDir dir;
    for (const QString& folder : qAsConst(folders)) {
        dir.folder(folder);
    }
    for (const QString& file : qAsConst(files)) {
        dir.file(file);
    }
    FolderEntries entries = readFolder(dir.path());
    QCOMPARE(entries.size(), folders.size() + files.size() + 1);
    std::reverse(entries.begin(), entries.end());
    sortFolderEntries(entries);
    QCOMPARE(namesOf(entries), stockOrder(dir.path()));
}

void TestFolderEntries::namesThatCompareEqual_data()
{
    QTest::addColumn<QString>("locale");
    QTest::newRow("C") << QStringLiteral("C");
    QTest::newRow("en_US") << QStringLiteral("en_US");
}

// Which of two names that compare equal comes first is the stock model's accident. Here it is always the
// same, whatever order the folder was read in.
void TestFolderEntries::namesThatCompareEqual()
{
    QFETCH(QString, locale);
    QLocale::setDefault(locale == QLatin1String("C") ? QLocale::c() : QLocale(locale));
    const TestDir dir;
    for (const char* name : {"readme", "README", "Readme", "b", "B", "file1", "FILE1", "file01"}) {
        dir.file(QLatin1String(name));
    }
    FolderEntries entries = readFolder(dir.path());
    FolderEntries other = entries;
    std::reverse(other.begin(), other.end());
    sortFolderEntries(entries);
    sortFolderEntries(other);
    QCOMPARE(namesOf(entries), namesOf(other));
    QCollator collator;
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    for (int i = 2; i < entries.size(); ++i) {
        QVERIFY2(collator.compare(entries.at(i - 1).first, entries.at(i).first) <= 0,
            qPrintable(entries.at(i).first));
    }
}

void TestFolderEntries::foldersComeFirst()
{
    const TestDir dir;
    dir.folder(QStringLiteral("zfolder"));
    dir.file(QStringLiteral("afile"));
    dir.link(QStringLiteral("blink"), QStringLiteral("zfolder"));
    dir.link(QStringLiteral("dangling"), QStringLiteral("nowhere"));
    FolderEntries entries = readFolder(dir.path());
    sortFolderEntries(entries);
    // A link to a folder counts as one.
    QCOMPARE(namesOf(entries), (QStringList{"..", "blink", "zfolder", "afile", "dangling"}));
}

void TestFolderEntries::emptyAndSingle()
{
    FolderEntries entries;
    sortFolderEntries(entries);
    QVERIFY(entries.isEmpty());
    entries.append(qMakePair(QStringLiteral("one"), QFileInfo(QStringLiteral("/one"))));
    sortFolderEntries(entries);
    QCOMPARE(namesOf(entries), QStringList{"one"});
}

void TestFolderEntries::firstReadingIsAllNew()
{
    const TestDir dir;
    dir.files(QStringLiteral("."), 5);
    const FolderEntries entries = readFolder(dir.path());
    const FolderReading reading = compared(FolderEntries(), entries);
    QCOMPARE(namesOf(reading.changed), namesOf(entries));
    QVERIFY(reading.removed.isEmpty());
}

void TestFolderEntries::nothingChanged()
{
    const TestDir dir;
    dir.files(QStringLiteral("."), 5);
    const FolderReading reading = compared(readFolder(dir.path()), readFolder(dir.path()));
    QCOMPARE(reading.entries.size(), 6);
    QVERIFY(reading.changed.isEmpty());
    QVERIFY(reading.removed.isEmpty());
}

void TestFolderEntries::orderDoesNotMatter()
{
    const TestDir dir;
    dir.files(QStringLiteral("."), 20);
    const FolderEntries before = readFolder(dir.path());
    FolderEntries after = readFolder(dir.path());
    std::reverse(after.begin(), after.end());
    const FolderReading reading = compared(before, after);
    QVERIFY(reading.changed.isEmpty());
    QVERIFY(reading.removed.isEmpty());
}

void TestFolderEntries::newAndRemoved()
{
    const TestDir dir;
    dir.files(QStringLiteral("."), 3);
    const FolderEntries before = readFolder(dir.path());
    dir.file(QStringLiteral("new"));
    QVERIFY(QFile::remove(dir.path(QStringLiteral("file0.txt"))));
    QVERIFY(QFile::rename(dir.path(QStringLiteral("file1.txt")), dir.path(QStringLiteral("renamed"))));
    FolderReading reading = compared(before, readFolder(dir.path()));
    QStringList changed = namesOf(reading.changed);
    changed.removeAll(QStringLiteral(".."));
    changed.sort();
    reading.removed.sort();
    QCOMPARE(changed, (QStringList{"new", "renamed"}));
    QCOMPARE(reading.removed, (QStringList{"file0.txt", "file1.txt"}));
}

void TestFolderEntries::factsThatCount_data()
{
    QTest::addColumn<QString>("what");
    for (const char* what : {"size", "size with the same time", "time", "mode", "owner's execute bit",
             "file becomes folder", "file becomes link", "link gets another target's size"}) {
        QTest::newRow(what) << QString::fromLatin1(what);
    }
}

void TestFolderEntries::factsThatCount()
{
    QFETCH(QString, what);
    const TestDir dir;
    const QString path = dir.file(QStringLiteral("it"), "12345");
    dir.file(QStringLiteral("other"), "123");
    dir.file(QStringLiteral("longer"), "1234567");
    dir.link(QStringLiteral("link"), QStringLiteral("other"));
    const auto keepTimes = [&dir] {
        for (const char* name : {"it", "other", "longer", "link", "."}) {
            dir.setTimes(QLatin1String(name), 1000000);
        }
    };
    keepTimes();
    const FolderEntries before = readFolder(dir.path());
    QString name = QStringLiteral("it");
    if (what == QLatin1String("size")) {
        dir.file(name, "123456");
    } else if (what == QLatin1String("size with the same time")) {
        dir.file(name, "123456");
        keepTimes();
    } else if (what == QLatin1String("time")) {
        dir.setTimes(name, 1000001);
    } else if (what == QLatin1String("mode")) {
        dir.setMode(name, 0646);
    } else if (what == QLatin1String("owner's execute bit")) {
        dir.setMode(name, 0744);
    } else if (what == QLatin1String("file becomes folder")) {
        QVERIFY(QFile::remove(path));
        dir.folder(name);
        keepTimes();
    } else if (what == QLatin1String("file becomes link")) {
        QVERIFY(QFile::remove(path));
        dir.file(QStringLiteral("longer"), "12345");
        dir.link(name, QStringLiteral("longer"));
        keepTimes();
    } else {
        name = QStringLiteral("link");
        QVERIFY(QFile::remove(dir.path(name)));
        dir.link(name, QStringLiteral("longer"));
        keepTimes();
    }
    const FolderReading reading = compared(before, readFolder(dir.path()));
    QVERIFY2(namesOf(reading.changed).contains(name), qPrintable(namesOf(reading.changed).join(' ')));
    QVERIFY(!namesOf(reading.changed).contains(QStringLiteral("other")));
    QVERIFY(reading.removed.isEmpty());
}

VANTREL_TEST_MAIN(TestFolderEntries)
#include "tst_FolderEntries.moc"
