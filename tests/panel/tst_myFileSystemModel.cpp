#include "panel/myFileSystemModel.h"

#include "app/TextHelpers.h"
#include "panel/MPanel.h"
#include "tests/support/ModelFixture.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/TestMain.h"

#include <QCommonStyle>
#include <QDateTime>
#include <QFile>
#include <QSignalSpy>

#include <unistd.h>

namespace {

QImage picture(const QVariant& icon)
{
    return icon.value<QIcon>().pixmap(16, 16).toImage();
}

} // namespace

/// What the model tells of the entries of a folder that is loaded.
class TestmyFileSystemModel : public QObject, protected ModelFixture
{
    Q_OBJECT

private slots:
    void folderThatIsNotThere();
    void init() { start(); }
    void cleanup() { end(); }

    void header_data();
    void header();
    void headerOfOneColumn();
    void columnCountIsTheBases();

    void invalidIndex_data();
    void invalidIndex();
    void outsideTheRoot_data();
    void outsideTheRoot();
    void rootTextAnywhereCounts();
    void rootTextIsCaseSensitive();
    void alignment();
    void sizes_data();
    void sizes();
    void owner_data();
    void owner();
    void ownerWithoutName();
    void modified_data();
    void modified();
    void columnsBeyond();
    void namesAsTheyAre_data();
    void namesAsTheyAre();
    void otherRolesAreTheBases();

    void currentFolderIsOpen();
    void linksHaveTheLinkIcon();
    void linkThatIsCurrent();
    void otherIconsAreTheBases();
    void decorationOfOtherColumns();

    void stats_data();
    void stats();
    void statsOfNothing_data();
    void statsOfNothing();
    void statsAskNotTheDisk();
    void statsOfALink();
};

void TestmyFileSystemModel::header_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("section");
    QTest::addColumn<int>("orientation");
    QTest::addColumn<int>("role");
    QTest::addColumn<QVariant>("expected");
    const QStringList names{"Name", "Size", "Owner", "Modified"};
    for (int section = 0; section < 4; ++section) {
        const QByteArray name = names.at(section).toLatin1();
        QTest::newRow(name + " text")
            << 4 << section << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant(names.at(section));
        QTest::newRow(name + " alignment")
            << 4 << section << int(Qt::Horizontal) << int(Qt::TextAlignmentRole)
            << QVariant(int(section == 0 ? Qt::AlignLeft : Qt::AlignRight));
        QTest::newRow(name + " vertical")
            << 4 << section << int(Qt::Vertical) << int(Qt::DisplayRole) << QVariant();
        QTest::newRow(name + " vertical alignment")
            << 4 << section << int(Qt::Vertical) << int(Qt::TextAlignmentRole) << QVariant();
        QTest::newRow(name + " decoration")
            << 4 << section << int(Qt::Horizontal) << int(Qt::DecorationRole) << QVariant();
        QTest::newRow(name + " tool tip")
            << 4 << section << int(Qt::Horizontal) << int(Qt::ToolTipRole) << QVariant();
        QTest::newRow(name + " no columns")
            << 0 << section << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant();
    }
    QTest::newRow("beyond") << 4 << 4 << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant();
    QTest::newRow("beyond alignment")
        << 4 << 4 << int(Qt::Horizontal) << int(Qt::TextAlignmentRole) << QVariant();
    QTest::newRow("two columns, third")
        << 2 << 2 << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant();
    QTest::newRow("two columns, second")
        << 2 << 1 << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant(QStringLiteral("Size"));
    QTest::newRow("negative") << 4 << -1 << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant();
    QTest::newRow("fifth of five") << 5 << 4 << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant();
}

void TestmyFileSystemModel::header()
{
    QFETCH(int, columns);
    QFETCH(int, section);
    QFETCH(int, orientation);
    QFETCH(int, role);
    QFETCH(QVariant, expected);
    myFileSystemModel fresh(panel);
    fresh.setColumns(columns);
    const QVariant got = fresh.headerData(section, static_cast<Qt::Orientation>(orientation), role);
    QCOMPARE(got.isValid(), expected.isValid());
    if (role == Qt::TextAlignmentRole) {
        QCOMPARE(got.toInt(), expected.toInt());
    } else {
        QCOMPARE(got, expected);
    }
}

void TestmyFileSystemModel::headerOfOneColumn()
{
    QCOMPARE(
        panel->treeModel->headerData(0, Qt::Horizontal, Qt::DisplayRole).toString(), QStringLiteral("Name"));
    for (int section = 1; section < 4; ++section) {
        QVERIFY(!panel->treeModel->headerData(section, Qt::Horizontal, Qt::DisplayRole).isValid());
        QVERIFY(!panel->treeModel->headerData(section, Qt::Horizontal, Qt::TextAlignmentRole).isValid());
    }
}

void TestmyFileSystemModel::columnCountIsTheBases()
{
    load(dir->path(), treeFilter, 1);
    QCOMPARE(model->columnCount(root), 4);
    QCOMPARE(model->columnCount(QModelIndex()), 4);
}

void TestmyFileSystemModel::invalidIndex_data()
{
    QTest::addColumn<int>("role");
    for (const int role : {int(Qt::DisplayRole), int(Qt::DecorationRole), int(Qt::TextAlignmentRole),
             int(Qt::EditRole), int(Qt::ToolTipRole), int(QFileSystemModel::FilePathRole)}) {
        QTest::newRow(("role " + QByteArray::number(role)).constData()) << role;
    }
}

void TestmyFileSystemModel::invalidIndex()
{
    QFETCH(int, role);
    const QVariant got = panel->listModel->data(QModelIndex(), role);
    QCOMPARE(got.userType(), int(QMetaType::QString));
    QCOMPARE(got.toString(), QString());
}

void TestmyFileSystemModel::outsideTheRoot_data()
{
    QTest::addColumn<int>("role");
    for (const int role : {int(Qt::DisplayRole), int(Qt::DecorationRole), int(Qt::TextAlignmentRole),
             int(Qt::EditRole), int(QFileSystemModel::FilePathRole)}) {
        QTest::newRow(("role " + QByteArray::number(role)).constData()) << role;
    }
}

void TestmyFileSystemModel::outsideTheRoot()
{
    QFETCH(int, role);
    dir->file(QStringLiteral("inside/file"));
    dir->file(QStringLiteral("outside"), "123");
    load(dir->path());
    panel->rootPath = dir->path(QStringLiteral("inside"));
    for (int column = 0; column < 4; ++column) {
        const QVariant got = model->data(row(QStringLiteral("outside"), column), role);
        QCOMPARE(got.userType(), int(QMetaType::QString));
        QCOMPARE(got.toString(), QString());
    }
    QCOMPARE(text(QStringLiteral("inside")).toString(), QStringLiteral("inside"));
}

void TestmyFileSystemModel::rootTextAnywhereCounts()
{
    dir->file(QStringLiteral("sub/file"));
    dir->file(QStringLiteral("other"));
    load(dir->path());
    panel->rootPath = QStringLiteral("/sub");
    QCOMPARE(text(QStringLiteral("sub")).toString(), QStringLiteral("sub"));
    QCOMPARE(text(QStringLiteral("other")).toString(), QString());
}

void TestmyFileSystemModel::rootTextIsCaseSensitive()
{
    dir->file(QStringLiteral("Sub/file"));
    load(dir->path());
    panel->rootPath = dir->path(QStringLiteral("sub"));
    QCOMPARE(text(QStringLiteral("Sub")).toString(), QString());
    panel->rootPath = dir->path(QStringLiteral("Sub"));
    QCOMPARE(text(QStringLiteral("Sub")).toString(), QStringLiteral("Sub"));
}

void TestmyFileSystemModel::alignment()
{
    dir->file(QStringLiteral("file"));
    load(dir->path());
    const int expected[] = {Qt::AlignLeft, Qt::AlignRight, Qt::AlignRight, Qt::AlignRight};
    for (int column = 0; column < 4; ++column) {
        QCOMPARE(row(QStringLiteral("file"), column).data(Qt::TextAlignmentRole).toInt(), expected[column]);
    }
    model->setColumns(1);
    QCOMPARE(row(QStringLiteral("file"), 3).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignRight));
}

void TestmyFileSystemModel::sizes_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("expected");
    QTest::newRow("empty") << qint64(0) << QStringLiteral("0");
    QTest::newRow("one") << qint64(1) << QStringLiteral("1");
    QTest::newRow("999") << qint64(999) << QStringLiteral("999");
    QTest::newRow("1000") << qint64(1000) << QStringLiteral("1,000");
    QTest::newRow("millions") << qint64(1234567) << QStringLiteral("1,234,567");
    QTest::newRow("beyond 32 bits") << (qint64(1) << 32) << QStringLiteral("4,294,967,296");
    QTest::newRow("8 TB") << qint64(8796093022207) << QStringLiteral("8,796,093,022,207");
}

void TestmyFileSystemModel::sizes()
{
    QFETCH(qint64, bytes);
    QFETCH(QString, expected);
    dir->sparseFile(QStringLiteral("file"), bytes);
    dir->folder(QStringLiteral("folder"));
    QLocale::setDefault(QLocale(QLocale::German));
    load(dir->path());
    QCOMPARE(text(QStringLiteral("file"), 1).toString(), expected);
    QCOMPARE(text(QStringLiteral("folder"), 1).toString(), QStringLiteral("0"));
    QLocale::setDefault(QLocale::c());
}

void TestmyFileSystemModel::owner_data()
{
    QTest::addColumn<unsigned>("mode");
    QTest::addColumn<QString>("digits");
    QTest::newRow("644") << 0644U << QStringLiteral("644");
    QTest::newRow("755") << 0755U << QStringLiteral("755");
    QTest::newRow("004") << 0004U << QStringLiteral("004");
    QTest::newRow("000") << 0000U << QStringLiteral("000");
    QTest::newRow("777") << 0777U << QStringLiteral("777");
    QTest::newRow("set-uid is left out") << 04755U << QStringLiteral("755");
}

void TestmyFileSystemModel::owner()
{
    QFETCH(unsigned, mode);
    QFETCH(QString, digits);
    const QString path = dir->file(QStringLiteral("file"), "x", mode);
    load(dir->path());
    const QString name = QFileInfo(dir->path()).owner();
    QVERIFY(!name.isEmpty());
    QCOMPARE(text(QStringLiteral("file"), 2).toString(), name + QLatin1Char(' ') + digits);
    QCOMPARE(digits, xs_formatPermisions(QFileInfo(path)));
}

void TestmyFileSystemModel::ownerWithoutName()
{
    const QString path = dir->file(QStringLiteral("file"), "x", 0640);
    if (::chown(QFile::encodeName(path).constData(), 54321, 54321) != 0) {
        QSKIP("only the superuser can give files away");
    }
    load(dir->path());
    QCOMPARE(text(QStringLiteral("file"), 2).toString(), QFileInfo(path).owner() + QStringLiteral(" 640"));
}

void TestmyFileSystemModel::modified_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<QString>("expected");
    QTest::newRow("first minute") << qint64(1) << QStringLiteral("1970-01-01 00:00");
    QTest::newRow("afternoon") << qint64(1000000000) << QStringLiteral("2001-09-09 01:46");
    QTest::newRow("last second of a year") << qint64(1704067199) << QStringLiteral("2023-12-31 23:59");
    QTest::newRow("beyond 2038") << qint64(4102444800) << QStringLiteral("2100-01-01 00:00");
    QTest::newRow("before the epoch") << qint64(-86400) << QStringLiteral("1969-12-31 00:00");
}

void TestmyFileSystemModel::modified()
{
    QFETCH(qint64, seconds);
    QFETCH(QString, expected);
    dir->file(QStringLiteral("file"));
    dir->folder(QStringLiteral("folder"));
    dir->setTimes(QStringLiteral("file"), seconds);
    dir->setTimes(QStringLiteral("folder"), seconds);
    load(dir->path());
    QCOMPARE(text(QStringLiteral("file"), 3).toString(), expected);
    QCOMPARE(text(QStringLiteral("folder"), 3).toString(), expected);
}

void TestmyFileSystemModel::columnsBeyond()
{
    dir->file(QStringLiteral("file"), "123");
    load(dir->path(), listFilter, 1);
    QCOMPARE(text(QStringLiteral("file"), 0).toString(), QStringLiteral("file"));
    for (int column = 1; column < 4; ++column) {
        QVERIFY(!text(QStringLiteral("file"), column).isValid());
    }
    model->setColumns(2);
    QCOMPARE(text(QStringLiteral("file"), 1).toString(), QStringLiteral("3"));
    QVERIFY(!text(QStringLiteral("file"), 2).isValid());
    model->setColumns(0);
    QVERIFY(!text(QStringLiteral("file"), 0).isValid());
}

void TestmyFileSystemModel::namesAsTheyAre_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("placeholder") << QStringLiteral("%1 %2 %n");
    QTest::newRow("markup") << QStringLiteral("<b>x<b>");
    QTest::newRow("newline") << QStringLiteral("a\nb");
    QTest::newRow("tab and bell") << QStringLiteral("a\tb\a");
    QTest::newRow("255 bytes") << QString(255, QLatin1Char('z'));
    QTest::newRow("255 bytes of two each") << QString(127, QChar(0xe4)) + QLatin1Char('x');
    QTest::newRow("beyond the basic plane") << QString::fromUtf8("😀");
    QTest::newRow("blanks") << QStringLiteral("  two  ");
    QTest::newRow("three dots") << QStringLiteral("...");
    QTest::newRow("ampersand") << QStringLiteral("a&b");
    QTest::newRow("backslash") << QStringLiteral("a\\b");
    QTest::newRow("quotes") << QStringLiteral("\"a' `b`");
    QTest::newRow("hidden") << QStringLiteral(".hidden");
    QTest::newRow("like the parent") << QStringLiteral("..x");
}

void TestmyFileSystemModel::namesAsTheyAre()
{
    QFETCH(QString, name);
    dir->file(name, "12");
    load(dir->path());
    QCOMPARE(model->rowCount(root), 2);
    QCOMPARE(text(name).toString(), name);
    QCOMPARE(text(name, 1).toString(), QStringLiteral("2"));
    QCOMPARE(model->filePath(row(name)), dir->path(name));
}

void TestmyFileSystemModel::otherRolesAreTheBases()
{
    const QString path = dir->file(QStringLiteral("file"));
    load(dir->path());
    const QModelIndex index = row(QStringLiteral("file"));
    for (const int role :
        {int(Qt::EditRole), int(QFileSystemModel::FilePathRole), int(QFileSystemModel::FileNameRole),
            int(Qt::ToolTipRole), int(Qt::CheckStateRole), int(QFileSystemModel::FilePermissions)}) {
        QCOMPARE(index.data(role), model->QFileSystemModel::data(index, role));
    }
    QCOMPARE(index.data(Qt::EditRole).toString(), QStringLiteral("file"));
    QCOMPARE(index.data(QFileSystemModel::FilePathRole).toString(), path);
}

void TestmyFileSystemModel::currentFolderIsOpen()
{
    QIcon::setThemeSearchPaths({dir->path(QStringLiteral("themes"))});
    dir->file(QStringLiteral("themes/t/index.theme"),
        "[Icon Theme]\nName=t\nDirectories=16\n[16]\nSize=16\nType=Fixed\n");
    dir->folder(QStringLiteral("themes/t/16"));
    QImage image(16, 16, QImage::Format_RGB32);
    image.fill(Qt::magenta);
    QVERIFY(image.save(dir->path(QStringLiteral("themes/t/16/folder-open.png"))));
    QIcon::setThemeName(QStringLiteral("t"));
    dir->folder(QStringLiteral("one"));
    dir->folder(QStringLiteral("two"));
    load(dir->path(), treeFilter, 1);
    panel->currentTreeIndex = row(QStringLiteral("one"));
    QCOMPARE(
        picture(row(QStringLiteral("one")).data(Qt::DecorationRole)).pixelColor(8, 8), QColor(Qt::magenta));
    QVERIFY(
        picture(row(QStringLiteral("two")).data(Qt::DecorationRole)).pixelColor(8, 8) != QColor(Qt::magenta));
    panel->currentTreeIndex = row(QStringLiteral("two"));
    QVERIFY(
        picture(row(QStringLiteral("one")).data(Qt::DecorationRole)).pixelColor(8, 8) != QColor(Qt::magenta));
    // The same folder of another model is another index.
    QCOMPARE(
        panel->treeModel->index(dir->path(QStringLiteral("two"))).data().toString(), QStringLiteral("two"));
    QVERIFY(picture(panel->treeModel->index(dir->path(QStringLiteral("two"))).data(Qt::DecorationRole))
                .pixelColor(8, 8)
        != QColor(Qt::magenta));
    QIcon::setThemeName(QStringLiteral("none"));
}

void TestmyFileSystemModel::linksHaveTheLinkIcon()
{
    dir->folder(QStringLiteral("folder"));
    dir->file(QStringLiteral("file"));
    dir->link(QStringLiteral("to folder"), QStringLiteral("folder"));
    dir->link(QStringLiteral("to file"), QStringLiteral("file"));
    dir->link(QStringLiteral("to nothing"), QStringLiteral("nowhere"));
    dir->link(QStringLiteral("to link"), QStringLiteral("to file"));
    load(dir->path());
    const QImage expected = picture(QCommonStyle().standardIcon(QStyle::SP_CommandLink));
    QVERIFY(!expected.isNull());
    for (const char* name : {"to folder", "to file", "to nothing", "to link"}) {
        QCOMPARE(picture(row(QLatin1String(name)).data(Qt::DecorationRole)), expected);
    }
    QVERIFY(picture(row(QStringLiteral("file")).data(Qt::DecorationRole)) != expected);
    QVERIFY(picture(row(QStringLiteral("folder")).data(Qt::DecorationRole)) != expected);
}

void TestmyFileSystemModel::linkThatIsCurrent()
{
    dir->folder(QStringLiteral("folder"));
    dir->link(QStringLiteral("link"), QStringLiteral("folder"));
    load(dir->path());
    panel->currentTreeIndex = row(QStringLiteral("link"));
    QCOMPARE(picture(row(QStringLiteral("link")).data(Qt::DecorationRole)),
        picture(QIcon::fromTheme(QStringLiteral("folder-open"), QIcon())));
}

void TestmyFileSystemModel::otherIconsAreTheBases()
{
    dir->folder(QStringLiteral("folder"));
    for (const char* name : {"file", "a.txt", "b.png", ".hidden"}) {
        dir->file(QLatin1String(name));
    }
    dir->fifo(QStringLiteral("fifo"));
    dir->socket(QStringLiteral("socket"));
    QFileSystemModel stock;
    stock.setFilter(listFilter);
    QSignalSpy loaded(&stock, &QFileSystemModel::directoryLoaded);
    const QModelIndex stockRoot = stock.setRootPath(dir->path());
    QVERIFY(loaded.wait());
    load(dir->path());
    for (const char* name : {"folder", "file", "a.txt", "b.png", ".hidden", "..", "fifo", "socket"}) {
        const QModelIndex index = row(QLatin1String(name));
        QVERIFY(!picture(index.data(Qt::DecorationRole)).isNull());
        QCOMPARE(picture(index.data(Qt::DecorationRole)),
            picture(rowOf(stock, stockRoot, QLatin1String(name)).data(Qt::DecorationRole)));
    }
}

void TestmyFileSystemModel::decorationOfOtherColumns()
{
    dir->file(QStringLiteral("file"));
    load(dir->path());
    for (int column = 1; column < 4; ++column) {
        QVERIFY(!row(QStringLiteral("file"), column).data(Qt::DecorationRole).isValid());
    }
}

void TestmyFileSystemModel::stats_data()
{
    QTest::addColumn<QString>("end");
    QTest::newRow("as it was read") << QString();
    QTest::newRow("counted by its rows") << QStringLiteral("/");
}

void TestmyFileSystemModel::stats()
{
    QFETCH(QString, end);
    dir->file(QStringLiteral("a"), QByteArray(1000, 'x'));
    dir->file(QStringLiteral(".hidden"), QByteArray(500, 'x'));
    dir->folder(QStringLiteral("one"));
    dir->folder(QStringLiteral(".two"));
    dir->file(QStringLiteral("one/deeper"), QByteArray(9999, 'x'));
    dir->link(QStringLiteral("link"), QStringLiteral("a"));
    dir->link(QStringLiteral("link to folder"), QStringLiteral("one"));
    dir->link(QStringLiteral("dangling"), QStringLiteral("nowhere"));
    load(dir->path());
    qint64 dirs = -1;
    qint64 files = -1;
    qint64 bytes = -1;
    model->getFolderStats(dir->path() + end, dirs, files, bytes);
    QCOMPARE(dirs, 3); // a link to a folder counts as one
    QCOMPARE(files, 4);
    qint64 expected = 1000 + 500;
    for (const char* name : {"one", ".two", "link", "link to folder", "dangling"}) {
        expected += QFileInfo(dir->path(QLatin1String(name))).size();
    }
    QVERIFY(QFileInfo(dir->path(QStringLiteral("one"))).size() > 0);
    QCOMPARE(bytes, expected);
}

void TestmyFileSystemModel::statsOfNothing_data()
{
    QTest::addColumn<QString>("relative");
    QTest::newRow("only the parent's row") << QStringLiteral("empty");
    QTest::newRow("not loaded") << QStringLiteral("other");
    QTest::newRow("missing") << QStringLiteral("missing");
    QTest::newRow("file") << QStringLiteral("other/file");
}

void TestmyFileSystemModel::statsOfNothing()
{
    QFETCH(QString, relative);
    dir->folder(QStringLiteral("empty"));
    dir->file(QStringLiteral("other/file"), "123");
    load(dir->path(QStringLiteral("empty")));
    QCOMPARE(rowNames(*model, root), QStringList{".."});
    qint64 dirs = 5;
    qint64 files = 6;
    qint64 bytes = 7;
    model->getFolderStats(dir->path(relative), dirs, files, bytes);
    QCOMPARE(dirs, 0);
    QCOMPARE(files, 0);
    QCOMPARE(bytes, 0);
}

void TestmyFileSystemModel::statsAskNotTheDisk()
{
    dir->file(QStringLiteral("a"), "123");
    dir->file(QStringLiteral("b"), "123");
    load(dir->path());
    QVERIFY(QFile::remove(dir->path(QStringLiteral("b"))));
    qint64 dirs = 0;
    qint64 files = 0;
    qint64 bytes = 0;
    model->getFolderStats(dir->path(), dirs, files, bytes);
    QCOMPARE(files, 2);
    QCOMPARE(bytes, 6);
}

void TestmyFileSystemModel::statsOfALink()
{
    dir->file(QStringLiteral("folder/a"), "12345");
    const QString link = dir->link(QStringLiteral("link"), QStringLiteral("folder"));
    load(link);
    qint64 dirs = 0;
    qint64 files = 0;
    qint64 bytes = 0;
    model->getFolderStats(link, dirs, files, bytes);
    QCOMPARE(files, 1);
    QCOMPARE(bytes, 5);
}

/// The base class takes another folder then, with a valid index.
void TestmyFileSystemModel::folderThatIsNotThere()
{
    for (const QString& path : {QStringLiteral("/no/such/place"), QString(), QStringLiteral(".")}) {
        myFileSystemModel none(panel);
        none.setFilter(QDir::AllEntries);
        none.setColumns(4);
        QVERIFY(!none.showFolder(path).isValid());
        QVERIFY(none.showsNothing());
        none.sort(1, Qt::DescendingOrder);
        QVERIFY(readAnotherFolder());
        QCOMPARE(none.rowCount(), 0);
        QVERIFY(!none.hasChildren());
        QVERIFY(!none.index(QStringLiteral("/")).isValid());
        QVERIFY(!none.index(0, 0).isValid());
    }
    myFileSystemModel there(panel);
    QCOMPARE(there.filePath(there.showFolder(dir->path())), dir->path());
    QVERIFY(!there.showsNothing());
}

VANTREL_TEST_MAIN(TestmyFileSystemModel)
#include "tst_myFileSystemModel.moc"
