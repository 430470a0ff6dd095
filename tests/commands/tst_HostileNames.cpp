#include "app/aGlobal.h"
#include "commands/DialogNewDir.h"
#include "commands/Rename.h"
#include "info/Checksum.h"
#include "info/DialogFileSize.h"
#include "info/MProperties.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/FormChild.h"
#include "tests/support/ModalAnswers.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/StandIn.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"
#include "tests/support/TextWatch.h"
#include "tests/support/TypedAnswers.h"

#include <QClipboard>
#include <QCryptographicHash>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>

#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QByteArray content("what the file holds");

struct HostileName
{
    const char* what;
    QByteArray name;
    bool isInShort = false; ///< whether the short form takes it
};

/// Names that are allowed on disk and that something on the way to the screen, or back, could take for more.
QVector<HostileName> hostileNames()
{
    return {
        {"newline", "one\ntwo", true},
        {"newline first", "\nb"},
        {"tab", "\ta\tb", true},
        {"carriage return", "a\rb\r"},
        {"control characters", "\x1b[31m\x01\x7f"},
        {"right to left override", "a\xe2\x80\xaegpj.exe", true},
        {"line separator", "\xe2\x80\xa8\xe2\x80\xa9"},
        {"placeholder", "%1", true},
        {"placeholders", "%2 %1 %L1 %99 %n"},
        {"percent encoded", "a%2fb%00"},
        {"markup", "<b>x<b>", true},
        {"picture", "<img src='x.png'>"},
        {"link", "<a href='x'>y"},
        {"entity", "&amp;&lt;", true},
        {"mnemonic", "&x", true},
        {"and signs", "R&D && &"},
        {"window marker", "a[*]b"},
        {"255 bytes", QByteArray(255, 'y'), true},
        {"85 characters of 3 bytes", QByteArray("\xe2\x82\xac").repeated(85)},
        {"leading dash", "-rf", true},
        {"trailing dot and blank", "a. ", true},
        {"blanks", "  "},
        {"three dots", "..."},
        {"to a shell", R"($(x) `x` 'x' "x" \ ; * ?)"},
        {"scheme", "file:a?b#c"},
        {"combining", "e\xcc\x81"},
        {"no character", "\xef\xbf\xbe\xef\xb7\x90"},
        {"replacement character", "\xef\xbf\xbd", true},
    };
}

QStringList shownTexts(const QWidget* dialog)
{
    QStringList texts;
    for (const QLabel* label : dialog->findChildren<QLabel*>()) {
        texts.append(label->text());
    }
    for (const QLineEdit* field : dialog->findChildren<QLineEdit*>()) {
        texts.append(field->text());
    }
    return texts;
}

/// Waits until the next dialog shows all these texts, and ends it.
template <typename Dialog>
void meetTexts(ModalAnswers& answers, const QStringList& texts)
{
    answers.meet<Dialog>([texts](Dialog* dialog) {
        for (const QString& text : texts) {
            QTRY_VERIFY2(shownTexts(dialog).contains(text), qPrintable(text));
        }
        dialog->reject();
    });
}

} // namespace

/// Items with names that could be taken for more than a name: every window shows them as they are, and every
/// command keeps them byte for byte. The folder has the same name as the item in it.
class TestHostileNames : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void dialogsShowThem_data() { addNames(); }
    void dialogsShowThem();
    void questionsShowThem_data() { addNames(); }
    void questionsShowThem();
    void operationsKeepThem_data() { addNames(); }
    void operationsKeepThem();
    void typedNamesAreKept_data() { addNames(); }
    void typedNamesAreKept();
    void handedOn_data() { addNames(); }
    void handedOn();
    void bytesThatAreNoText_data();
    void bytesThatAreNoText();

private:
    static void addNames();
    void select(const QString& item) const;
    void copyTo(const QString& typed, const QString& question) const;
    void drop(int code, const QString& item, const QString& target) const;

    std::unique_ptr<TestDir> dir;
    std::unique_ptr<PanelWindow> window;
    MPanel* panel = nullptr;
    QString name;
    QString folder; ///< what the panel shows: a folder of that name
    QString file; ///< an item of that name in it
};

void TestHostileNames::addNames()
{
    QTest::addColumn<QByteArray>("bytes");
    const bool isLong = qEnvironmentVariableIntValue("VANTREL_LONG") != 0;
    for (const HostileName& hostile : hostileNames()) {
        if (isLong || hostile.isInShort) {
            QTest::newRow(hostile.what) << hostile.name;
        }
    }
}

void TestHostileNames::init()
{
    QFETCH(QByteArray, bytes);
    const bool isText = QString::fromUtf8(bytes).toUtf8() == bytes;
    name = isText ? QString::fromUtf8(bytes) : QStringLiteral("a");
    dir = std::make_unique<TestDir>(TestDir::inMemory());
    folder = dir->folder(QStringLiteral("root/") + name);
    file = dir->file(QStringLiteral("root/") + name + QLatin1Char('/') + name, content);
    dir->folder(QStringLiteral("root/to"));
    window = std::make_unique<PanelWindow>(dir->path(QStringLiteral("root")));
    panel = window->panel;
    QVERIFY(window->activate());
    QVERIFY(openFolder(panel, folder));
    QTRY_VERIFY(listIndex(panel, name).isValid());
}

void TestHostileNames::cleanup()
{
    window.reset();
    dir.reset();
}

void TestHostileNames::select(const QString& item) const
{
    panel->list->setFocus();
    panel->list->selectionModel()->setCurrentIndex(
        listIndex(panel, item), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void TestHostileNames::dialogsShowThem()
{
    TextWatch watch(name);
    watch.look(&window->window);
    QVERIFY2(watch.texts >= 2, "the path bar and the status bar");
    ModalAnswers answers;
    meetTexts<MProperties>(answers, {file});
    panel->DoAction(CommandProperties, file, QString());
    meetTexts<DialogFileSize>(answers, {file});
    panel->DoAction(CommandTotalSize, file, QString());
    meetTexts<Checksum>(answers, {file});
    panel->DoAction(CommandChecksum, file, QString());
    meetTexts<DialogNewDir>(answers, {folder});
    panel->DoAction(CommandNewDir, QString(), QString());
    meetTexts<Rename>(answers, {folder, name});
    panel->DoAction(CommandRename, file, QString());
    QCOMPARE(answers.left(), 0);
    QCOMPARE(watch.windows, 6);
    QCOMPARE(watch.faults, QStringList());
}

/// Questions and messages of the panel and of an operation.
void TestHostileNames::questionsShowThem()
{
    dir->file(QStringLiteral("root/to/") + name, "in the way");
    TextWatch watch(name);
    ModalAnswers answers;
    BoxAnswers boxes;
    select(name);
    boxes.click(QStringLiteral("No"));
    panel->DoAction(CommandDelete, QString(), QString());
    gslDragList = QStringList{file};
    gsDragBase = folder;
    gsDropBase = dir->path(QStringLiteral("root/to"));
    boxes.click(QStringLiteral("Yes")).click(QStringLiteral("Abort"));
    panel->DoAction(CommandDropCopy, QString(), QString());
    boxes.click(QStringLiteral("OK"));
    panel->Launcher(
        QStringLiteral("/none/") + QString(name).remove(QRegularExpression(QStringLiteral("\\s"))), QString(),
        QString(), folder);
    answers.meet<DialogNewDir>([this](DialogNewDir* dialog) {
        formChild<QLineEdit>(*dialog, "lineEdit").setText(name);
        QTest::keyClick(dialog, Qt::Key_Return);
        dialog->reject();
    });
    boxes.click(QStringLiteral("OK"));
    panel->DoAction(CommandNewDir, QString(), QString());
    const QStringList texts = boxes.texts();
    QCOMPARE(texts.size(), 5);
    QCOMPARE(texts.at(0), QStringLiteral("Delete selected files in folder: \n\n") + folder);
    QVERIFY2(texts.at(2).contains(dir->path(QStringLiteral("root/to/")) + name), qPrintable(texts.at(2)));
    QCOMPARE(texts.at(4), name + QStringLiteral(" already exists in directory:\n") + folder);
    QVERIFY(watch.texts >= 3);
    QCOMPARE(watch.faults, QStringList());
}

void TestHostileNames::copyTo(const QString& typed, const QString& question) const
{
    ModalAnswers answers;
    BoxAnswers boxes;
    typeDestination(answers, typed);
    boxes.click(QStringLiteral("Yes"));
    panel->DoAction(CommandCopy, QString(), QString());
    QCOMPARE(boxes.texts(), QStringList{question});
}

void TestHostileNames::drop(int code, const QString& item, const QString& target) const
{
    BoxAnswers boxes;
    boxes.click(QStringLiteral("Yes"));
    gslDragList = QStringList{item};
    gsDropBase = target;
    panel->DoAction(code, QString(), QString());
}

void TestHostileNames::operationsKeepThem()
{
    const QString to = dir->path(QStringLiteral("root/to"));
    select(name);
    copyTo(
        to + QLatin1Char('/'), QStringLiteral("Copy selected file to: \n\n") + to + QLatin1Char('/') + name);
    QCOMPARE(dir->tree(QStringLiteral("root/to")), QStringList{name});
    QCOMPARE(dir->read(QStringLiteral("root/to/") + name), content);

    // The folder and what is in it: copied to another, moved there, deleted.
    const QStringList whole{name + QLatin1Char('/'), name + QLatin1Char('/') + name};
    drop(CommandDropCopy, folder, dir->folder(QStringLiteral("copied")));
    QCOMPARE(dir->tree(QStringLiteral("copied")), whole);
    QCOMPARE(dir->read(QStringLiteral("copied/") + whole.at(1)), content);
    drop(CommandDropMove, dir->path(QStringLiteral("copied/") + name), dir->folder(QStringLiteral("moved")));
    QCOMPARE(dir->tree(QStringLiteral("copied")), QStringList());
    QCOMPARE(dir->tree(QStringLiteral("moved")), whole);
    QCOMPARE(dir->read(QStringLiteral("moved/") + whole.at(1)), content);

    select(name);
    BoxAnswers boxes;
    boxes.click(QStringLiteral("Yes"));
    panel->DoAction(CommandDelete, QString(), QString());
    QCOMPARE(dir->tree(QStringLiteral("root/") + name), QStringList());
    QCOMPARE(dir->tree(QStringLiteral("root/to")), QStringList{name});
}

void TestHostileNames::typedNamesAreKept()
{
    ModalAnswers answers;
    const QString plain = dir->file(QStringLiteral("root/to/plain"), "p");
    answers.meet<Rename>([this](Rename* dialog) {
        formChild<QLineEdit>(*dialog, "lineEditNew").setText(name);
        QTest::keyClick(dialog, Qt::Key_Return);
    });
    panel->DoAction(CommandRename, plain, QString());
    QCOMPARE(dir->tree(QStringLiteral("root/to")), QStringList{name});
    answers.meet<Rename>([](Rename* dialog) {
        formChild<QLineEdit>(*dialog, "lineEditNew").setText(QStringLiteral("plain"));
        QTest::keyClick(dialog, Qt::Key_Return);
    });
    panel->DoAction(CommandRename, dir->path(QStringLiteral("root/to/") + name), QString());
    QCOMPARE(dir->tree(QStringLiteral("root/to")), QStringList{QStringLiteral("plain")});

    panel->currentPath = dir->folder(QStringLiteral("empty"));
    answers.meet<DialogNewDir>([this](DialogNewDir* dialog) {
        formChild<QLineEdit>(*dialog, "lineEdit").setText(name);
        QTest::keyClick(dialog, Qt::Key_Return);
    });
    panel->DoAction(CommandNewDir, QString(), QString());
    QCOMPARE(dir->tree(QStringLiteral("empty")), QStringList{name + QLatin1Char('/')});
}

/// To the clipboard, to programs, to a drag, and to what reads the file.
void TestHostileNames::handedOn()
{
    select(name);
    panel->DoAction(CommandClipboard, QString(), QString());
    QCOMPARE(QGuiApplication::clipboard()->text(), file + QLatin1Char('\n'));

    StandIn program(*dir);
    for (const int code : {CommandSendTo, CommandTerminalEx}) {
        panel->DoAction(code, file, program.path() + QStringLiteral(" -x"));
        const StandIn::Call call = program.next();
        QCOMPARE(call.folder, folder);
        QCOMPARE(call.arguments, (QStringList{QStringLiteral("-x"), file}));
    }

    ModalAnswers answers;
    QString sum;
    answers.meet<Checksum>([&sum](Checksum* dialog) {
        QTRY_COMPARE(dialog->running.load(), 0);
        sum = dialog->md5Text;
        dialog->reject();
    });
    panel->DoAction(CommandChecksum, file, QString());
    QCOMPARE(sum.toLatin1(), QCryptographicHash::hash(content, QCryptographicHash::Md5).toHex());
    qint64 files = 0;
    answers.meet<DialogFileSize>([&files](DialogFileSize* dialog) {
        QTRY_COMPARE(dialog->running.load(), 0);
        files = dialog->fileCount;
        dialog->reject();
    });
    gsNoRecurse = QStringLiteral("^/proc");
    panel->DoAction(CommandTotalSize, folder, QString());
    gsNoRecurse.clear();
    QCOMPARE(files, 1);

    gslDragList.clear();
    const QPoint start = panel->list->visualRect(listIndex(panel, name)).center();
    QTest::mousePress(panel->list->viewport(), Qt::LeftButton, {}, start);
    QMouseEvent move(QEvent::MouseMove, start + QPoint(0, 40), Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(panel->list->viewport(), &move);
    QCOMPARE(gslDragList, QStringList{file});
}

void TestHostileNames::bytesThatAreNoText_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("half a pair") << QByteArray("half \xed\xa0\x80");
    QTest::newRow("both halves") << QByteArray("\xed\xa0\x80\xed\xb0\x80");
    QTest::newRow("no UTF-8") << QByteArray("\xff\xfe\x80");
    QTest::newRow("too long for its character") << QByteArray("\xc0\xaf");
    QTest::newRow("cut off") << QByteArray("a\xe2\x82");
}

/// Names inside a folder: they are copied, moved and deleted byte for byte.
void TestHostileNames::bytesThatAreNoText()
{
    QFETCH(QByteArray, bytes);
    const QByteArray below = '/' + bytes + '/' + bytes;
    const auto made
        = [](const QByteArray& path) { return ::open(path.constData(), O_CREAT | O_WRONLY, 0644); };
    QCOMPARE(::mkdir((folder.toUtf8() + '/' + bytes).constData(), 0755), 0);
    const int descriptor = made(folder.toUtf8() + below);
    QVERIFY(descriptor >= 0);
    QCOMPARE(::write(descriptor, "abc", 3), 3);
    QCOMPARE(::close(descriptor), 0);
    const auto isThere
        = [&below](const QString& path) { return ::access((path.toUtf8() + below).constData(), F_OK) == 0; };
    drop(CommandDropCopy, folder, dir->folder(QStringLiteral("copied")));
    const QString copied = dir->path(QStringLiteral("copied/") + name);
    QVERIFY(isThere(folder) && isThere(copied));
    drop(CommandDropMove, copied, dir->folder(QStringLiteral("root/moved")));
    const QString moved = dir->path(QStringLiteral("root/moved/") + name);
    QVERIFY(!isThere(copied) && isThere(moved));

    QVERIFY(openFolder(panel, dir->path(QStringLiteral("root/moved"))));
    QTRY_VERIFY(listIndex(panel, name).isValid());
    select(name);
    BoxAnswers boxes;
    boxes.otherwise({QStringLiteral("Yes")});
    panel->DoAction(CommandDelete, QString(), QString());
    QCOMPARE(dir->tree(QStringLiteral("root/moved")), QStringList());
}

VANTREL_TEST_MAIN(TestHostileNames)
#include "tst_HostileNames.moc"
