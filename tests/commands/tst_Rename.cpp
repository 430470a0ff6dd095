#include "commands/Rename.h"

#include "tests/support/AsNobody.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/FormChild.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {

const QString ok = QStringLiteral("OK");

QLineEdit& field(const Rename& dialog, const char* caption)
{
    return *qobject_cast<QLineEdit*>(formChild<QLabel>(dialog, caption).buddy());
}

void press(const Rename& dialog, const QString& name)
{
    formChild<QLineEdit>(dialog, "lineEditNew").setText(name);
    formChild<QPushButton>(dialog, "pushButtonOK").click();
}

void compareBoxes(const BoxAnswers& answers, const Rename& dialog, const QStringList& texts)
{
    QCOMPARE(answers.texts(), texts);
    for (const BoxAnswers::Box& box : answers.seen()) {
        QCOMPARE(box.title, QStringLiteral("Error"));
        QCOMPARE(box.icon, QMessageBox::Critical);
        QCOMPARE(box.buttons, QStringList{ok});
        QCOMPARE(box.parent, &dialog);
        QVERIFY(box.modal);
    }
}

} // namespace

class TestRename : public QObject
{
    Q_OBJECT

private:
    QString m_before = QDir::currentPath();

private slots:
    void cleanup() { QDir::setCurrent(m_before); }

    void formIsTheDescribedOne()
    {
        QWidget parent;
        const Rename dialog(&parent, QStringLiteral("/home/user/old.txt"));
        QCOMPARE(dialog.parentWidget(), &parent);
        QVERIFY(dialog.layout() == nullptr);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Rename"));
        QCOMPARE(formChild<QLabel>(dialog, "label").text(), QStringLiteral("Current directory:"));
        QCOMPARE(formChild<QLabel>(dialog, "label_2").text(), QStringLiteral("Rename:"));
        QCOMPARE(formChild<QLabel>(dialog, "label_3").text(), QStringLiteral("New name:"));
        const auto readOnly = dialog.findChildren<QLineEdit*>(QStringLiteral("ReadOnly"));
        QCOMPARE(readOnly.size(), 2);
        QVERIFY(readOnly.at(0)->isReadOnly() && readOnly.at(1)->isReadOnly());
        QVERIFY(readOnly.contains(&field(dialog, "label")) && readOnly.contains(&field(dialog, "label_2")));
        const auto& edit = formChild<QLineEdit>(dialog, "lineEditNew");
        QVERIFY(!edit.isReadOnly());
        QCOMPARE(&field(dialog, "label_3"), &edit);
        const auto& okButton = formChild<QPushButton>(dialog, "pushButtonOK");
        QCOMPARE(okButton.text(), QStringLiteral("&OK"));
        QVERIFY(okButton.isDefault());
        const auto& cancel = formChild<QPushButton>(dialog, "pushButtonCancel");
        QCOMPARE(cancel.text(), QStringLiteral("&Cancel"));
        QVERIFY(!cancel.autoDefault());
    }

    void pathIsSplitAtItsLastSlash_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("name");
        QTest::newRow("usual") << "/home/user/a.b"
                               << "/home/user"
                               << "a.b";
        QTest::newRow("under the root") << "/etc"
                                        << "/"
                                        << "etc";
        QTest::newRow("no slash") << "etc"
                                  << "/"
                                  << "etc";
        QTest::newRow("slash at the end") << "/home/user/"
                                          << "/home/user"
                                          << "";
        QTest::newRow("like HTML") << "/home/<b>x"
                                   << "/home"
                                   << "<b>x";
    }
    void pathIsSplitAtItsLastSlash()
    {
        QFETCH(QString, path);
        const Rename dialog(nullptr, path);
        QTEST(field(dialog, "label").text(), "folder");
        QTEST(field(dialog, "label_2").text(), "name");
        QTEST(field(dialog, "label_3").text(), "name");
    }

    void renamesAndCloses_data()
    {
        QTest::addColumn<QString>("old");
        QTest::addColumn<QString>("name");
        QTest::newRow("file") << "file"
                              << "new";
        QTest::newRow("folder") << "sub"
                                << "new";
        QTest::newRow("not trimmed") << "file"
                                     << " new ";
        QTest::newRow("into a folder beside it") << "file"
                                                 << "sub/new";
        QTest::newRow("link, not its target") << "link"
                                              << "new link";
    }
    void renamesAndCloses()
    {
        QFETCH(QString, old);
        QFETCH(QString, name);
        TestDir dir;
        dir.file(QStringLiteral("file"), "abc");
        dir.folder(QStringLiteral("sub"));
        dir.link(QStringLiteral("link"), QStringLiteral("file"));
        BoxAnswers answers;
        Rename dialog(nullptr, dir.path(old));
        dialog.show();
        press(dialog, name);
        QVERIFY(dir.exists(name));
        QVERIFY(!dir.exists(old));
        QVERIFY(!dialog.isVisible());
        QVERIFY(answers.seen().isEmpty());
        QCOMPARE(QFileInfo(dir.path(name)).isSymLink(), old == QLatin1String("link"));
    }

    void nameIsSelectedAndReturnPressesOk()
    {
        TestDir dir;
        dir.file(QStringLiteral("file"), "abc");
        Rename dialog(nullptr, dir.path(QStringLiteral("file")));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        auto& edit = formChild<QLineEdit>(dialog, "lineEditNew");
        QTRY_VERIFY(edit.hasFocus());
        QTest::keyClicks(&edit, QStringLiteral("typed"));
        QTest::keyClick(&edit, Qt::Key_Return);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dir.tree(), QStringList{QStringLiteral("typed")});
    }

    void cancelDoesNothing_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("Escape") << static_cast<int>(Qt::Key_Escape);
        QTest::newRow("button") << 0;
    }
    void cancelDoesNothing()
    {
        QFETCH(int, key);
        TestDir dir;
        dir.file(QStringLiteral("file"), "abc");
        Rename dialog(nullptr, dir.path(QStringLiteral("file")));
        dialog.show();
        formChild<QLineEdit>(dialog, "lineEditNew").setText(QStringLiteral("new"));
        if (key == 0) {
            formChild<QPushButton>(dialog, "pushButtonCancel").click();
        } else {
            QTest::keyClick(&dialog, static_cast<Qt::Key>(key));
        }
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dir.tree(), QStringList{QStringLiteral("file")});
    }

    void refusalKeepsTheDialogOpen_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text"); // %1 is the folder
        QTest::newRow("unchanged") << "file"
                                   << "file already exists in directory:\n%1";
        QTest::newRow("another has the name") << "sub"
                                              << "sub already exists in directory:\n%1";
        QTest::newRow("no name") << ""
                                 << "Failed to rename:\nfile";
        QTest::newRow("no parent") << "no/new"
                                   << "Failed to rename:\nfile";
        QTest::newRow("through a file") << QStringLiteral("file/new") << "Failed to rename:\nfile";
        QTest::newRow("too long") << QString(256, QLatin1Char('n')) << "Failed to rename:\nfile";
    }
    void refusalKeepsTheDialogOpen()
    {
        QFETCH(QString, name);
        QFETCH(QString, text);
        TestDir dir;
        dir.file(QStringLiteral("file"), "abc");
        dir.file(QStringLiteral("sub"), "other");
        BoxAnswers answers;
        answers.click(ok);
        Rename dialog(nullptr, dir.path(QStringLiteral("file")));
        dialog.show();
        press(dialog, name);
        compareBoxes(answers, dialog, {text.replace(QLatin1String("%1"), dir.path())});
        QVERIFY(dialog.isVisible());
        QCOMPARE(dir.tree(), (QStringList{QStringLiteral("file"), QStringLiteral("sub")}));
        QCOMPARE(dir.read(QStringLiteral("sub")), QByteArray("other"));
        press(dialog, QStringLiteral("corrected"));
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dir.read(QStringLiteral("corrected")), QByteArray("abc"));
    }

    void nameOfABrokenLinkIsRefused()
    {
        TestDir dir;
        dir.file(QStringLiteral("file"), "abc");
        dir.link(QStringLiteral("link"), QStringLiteral("elsewhere"));
        BoxAnswers answers;
        answers.click(ok);
        Rename dialog(nullptr, dir.path(QStringLiteral("file")));
        dialog.show();
        press(dialog, QStringLiteral("link"));
        compareBoxes(answers, dialog, {QStringLiteral("Failed to rename:\nfile")});
        QVERIFY(dialog.isVisible());
        QVERIFY(!dir.exists(QStringLiteral("elsewhere")));
        QVERIFY(QFileInfo(dir.path(QStringLiteral("link"))).isSymLink());
        QCOMPARE(dir.read(QStringLiteral("file")), QByteArray("abc"));
    }

    void readOnlyFolderIsRefused()
    {
        TestDir dir;
        dir.setMode(QString(), 0755);
        dir.file(QStringLiteral("closed/file"), "abc");
        dir.setMode(QStringLiteral("closed"), 0555);
        const AsNobody nobody;
        BoxAnswers answers;
        answers.click(ok);
        Rename dialog(nullptr, dir.path(QStringLiteral("closed/file")));
        dialog.show();
        press(dialog, QStringLiteral("new"));
        compareBoxes(answers, dialog,
            {QStringLiteral("Permission denied to make changes in directory:\n")
                + dir.path(QStringLiteral("closed"))});
        QVERIFY(dialog.isVisible());
    }

    void whatHasVanishedClosesAndGoesOn_data()
    {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("texts"); // %1 is the test's folder
        QTest::newRow("item, name taken")
            << "gone"
            << "here" << QStringList{"Vantrel cannot find:\ngone", "here already exists in directory:\n%1"};
        QTest::newRow("item, new name")
            << "gone"
            << "new" << QStringList{"Vantrel cannot find:\ngone", "Failed to rename:\ngone"};
        QTest::newRow("folder and item")
            << "no/gone"
            << "new"
            << QStringList{"Vantrel cannot access directory:\n%1/no", "Vantrel cannot find:\ngone",
                   "Permission denied to make changes in directory:\n%1/no"};
        QTest::newRow("folder, item in the working folder, name taken")
            << "no/here"
            << "here"
            << QStringList{
                   "Vantrel cannot access directory:\n%1/no", "here already exists in directory:\n%1/no"};
        QTest::newRow("folder, item in the working folder, new name")
            << "no/here"
            << "new"
            << QStringList{"Vantrel cannot access directory:\n%1/no",
                   "Permission denied to make changes in directory:\n%1/no"};
    }
    void whatHasVanishedClosesAndGoesOn()
    {
        QFETCH(QString, item);
        QFETCH(QString, name);
        QFETCH(QStringList, texts);
        TestDir dir;
        dir.file(QStringLiteral("here"), "abc");
        QVERIFY(QDir::setCurrent(dir.path()));
        Rename dialog(nullptr, dir.path(item));
        dialog.show();
        BoxAnswers answers;
        QVector<bool> open;
        for (int i = 0; i < texts.size(); ++i) {
            answers.meanwhile([&open, &dialog] { open.append(dialog.isVisible()); }).click(ok);
        }
        press(dialog, name);
        compareBoxes(answers, dialog, texts.replaceInStrings(QStringLiteral("%1"), dir.path()));
        QVERIFY(open.takeFirst());
        QVERIFY(!open.contains(true));
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dir.tree(), QStringList{QStringLiteral("here")});
    }
};

VANTREL_TEST_MAIN(TestRename)
#include "tst_Rename.moc"
