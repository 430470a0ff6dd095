#include "info/Checksum.h"

#include "tests/support/AsNobody.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/FormChild.h"
#include "tests/support/NoThread.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QClipboard>
#include <QCryptographicHash>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

#include <unistd.h>

namespace {

const QString emptyMd5 = QStringLiteral("d41d8cd98f00b204e9800998ecf8427e");
const QString emptySha1 = QStringLiteral("da39a3ee5e6b4b0d3255bfef95601890afd80709");

QPushButton& okButton(const Checksum& dialog)
{
    return formChild<QPushButton>(dialog, "OKButton");
}

/// @return the read-only field beside a caption, since the fields share one name
QLineEdit& field(const Checksum& dialog, const char* caption)
{
    return *qobject_cast<QLineEdit*>(formChild<QLabel>(dialog, caption).buddy());
}
QString md5(const Checksum& dialog)
{
    return field(dialog, "label_2").text();
}
QString sha1(const Checksum& dialog)
{
    return field(dialog, "label_3").text();
}

QString digest(qint64 zeros, QCryptographicHash::Algorithm algorithm)
{
    QCryptographicHash hash(algorithm);
    const QByteArray block(1 << 20, '\0');
    for (; zeros > block.size(); zeros -= block.size()) {
        hash.addData(block);
    }
    hash.addData(block.left(static_cast<int>(zeros)));
    return QString::fromLatin1(hash.result().toHex());
}

void compareWithZeros(const Checksum& dialog, qint64 zeros)
{
    QCOMPARE(md5(dialog), digest(zeros, QCryptographicHash::Md5));
    QCOMPARE(sha1(dialog), digest(zeros, QCryptographicHash::Sha1));
}

void tick(Checksum& dialog)
{
    QTimerEvent event(0);
    QCoreApplication::sendEvent(&dialog, &event);
}

void makeLonger(const QString& path, qint64 bytes)
{
    QCOMPARE(::truncate(QFile::encodeName(path).constData(), bytes), 0);
}

} // namespace

class TestChecksum : public QObject
{
    Q_OBJECT

private:
    TestDir m_dir;
    int m_threads = 0; ///< before any dialog; one that has just ended may still be in the list

private slots:
    void initTestCase() { m_threads = threadCount(); }

    void formIsTheDescribedOne()
    {
        QWidget parent;
        const QString path = m_dir.file(QStringLiteral("a"), "abc");
        const Checksum dialog(&parent, path);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Checksums"));
        QCOMPARE(dialog.parentWidget(), &parent);
        const auto& box = formChild<QGroupBox>(dialog, "groupBox");
        QCOMPARE(box.title(), QStringLiteral("File Checksums:"));
        QCOMPARE(box.styleSheet(),
            QStringLiteral(
                "QGroupBox {border: 2px solid gray;  border-radius: 9px; margin-top: 0.5em; }\n"
                "QGroupBox::title {subcontrol-origin: margin; left: 30px; padding: 0 3px 0 3px; }"));
        QCOMPARE(formChild<QLabel>(box, "label").text(), QStringLiteral("Filename:"));
        QCOMPARE(formChild<QLabel>(box, "label_2").text(), QStringLiteral("MD5 Checksum:"));
        QCOMPARE(formChild<QLabel>(box, "label_3").text(), QStringLiteral("SHA1 Checksum:"));
        const auto fields = box.findChildren<QLineEdit*>(QStringLiteral("ReadOnly"));
        QCOMPARE(fields.size(), 3);
        for (const QLineEdit* edit : fields) {
            QVERIFY(edit->isReadOnly());
        }
        QCOMPARE(field(dialog, "label").text(), path);
        QCOMPARE(okButton(dialog).text(), QStringLiteral("Cancel"));
        QVERIFY(okButton(dialog).isDefault());
        QCOMPARE(formChild<QPushButton>(dialog, "CopyClipButton").text(), QStringLiteral("CopyClip"));
        const auto& bar = formChild<QProgressBar>(dialog, "progressBar");
        QCOMPARE(bar.minimum(), 0);
        QCOMPARE(bar.maximum(), 100);
        QCOMPARE(bar.value(), 0);
    }

    void constructorShowsAndStarts()
    {
        const Checksum dialog(nullptr, m_dir.file(QStringLiteral("a"), "abc"));
        QVERIFY(dialog.isVisible());
        QVERIFY(dialog.isModal());
        QCOMPARE(QApplication::activeModalWidget(), &dialog);
        QCOMPARE(dialog.running, 1);
        QCOMPARE(dialog.total, 3);
        QCOMPARE(md5(dialog) + sha1(dialog), QString());
        QTRY_COMPARE(dialog.running, 0);
        QCOMPARE(dialog.done, 3);
        QCOMPARE(okButton(dialog).text(), QStringLiteral("&OK"));
        QCOMPARE(dialog.md5Text, QStringLiteral("900150983cd24fb0d6963f7d28e17f72"));
        QCOMPARE(dialog.sha1Text, QStringLiteral("a9993e364706816aba3e25717850c26c9cd0d89d"));
        QCOMPARE(md5(dialog), dialog.md5Text);
        QCOMPARE(sha1(dialog), dialog.sha1Text);
    }

    void digestsAreRight_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("md5Text");
        QTest::addColumn<QString>("sha1Text");
        QTest::newRow("empty") << Q_INT64_C(0) << emptyMd5 << emptySha1;
        QTest::newRow("1 byte") << Q_INT64_C(1) << "93b885adfe0da089cdf634904fd59f71"
                                << "5ba93c9db0cff93f52b521d7420e43f6eda2784f";
        QTest::newRow("a block less one") << Q_INT64_C(32767) << "f128f774ede3fe931e7c6745c4292f40"
                                          << "0532841f4b5012231a0f4f239088570537d45608";
        QTest::newRow("a block") << Q_INT64_C(32768) << "bb7df04e1b0a2570657527a7e108ae23"
                                 << "5188431849b4613152fd7bdba6a3ff0a4fd6424b";
        QTest::newRow("a block and one") << Q_INT64_C(32769) << "0034c613e54e7ae0c6fc3a5b35c221f1"
                                         << "0ec66a4e34864982996fba76b67fd628c666cf37";
        QTest::newRow("5 GiB") << Q_INT64_C(5368709120) << "ec4bcc8776ea04479b786e063a9ace45"
                               << "13edccc7871c2016fbe8a2a0d808e19a90fbfc63";
    }
    void digestsAreRight()
    {
        QFETCH(qint64, bytes);
        const Checksum dialog(nullptr, m_dir.sparseFile(QStringLiteral("sparse"), bytes));
        QCOMPARE(dialog.total, bytes);
        QTRY_COMPARE_WITH_TIMEOUT(dialog.running, 0, 240000);
        QTEST(md5(dialog), "md5Text");
        QTEST(sha1(dialog), "sha1Text");
        QCOMPARE(dialog.done, bytes);
        if (bytes > 0) {
            QTRY_COMPARE(formChild<QProgressBar>(dialog, "progressBar").value(), 100);
        }
    }

    void emptyFileHasADefinedProgress()
    {
        Checksum dialog(nullptr, m_dir.file(QStringLiteral("empty")));
        QCOMPARE(dialog.total, 0);
        tick(dialog);
        QCOMPARE(formChild<QProgressBar>(dialog, "progressBar").value(), 0);
        dialog.done = 1; // infinite
        tick(dialog);
        QVERIFY(formChild<QProgressBar>(dialog, "progressBar").value() <= 100);
    }

    void progressIsCutToWholePercents()
    {
        Checksum dialog(nullptr, m_dir.file(QStringLiteral("a"), "abc"));
        QTRY_COMPARE(dialog.running, 0);
        const auto& bar = formChild<QProgressBar>(dialog, "progressBar");
        const QVector<QPair<qint64, int>> steps{{0, 0}, {1, 33}, {2, 66}, {3, 100}};
        for (const auto& step : steps) {
            dialog.done = step.first;
            QTRY_COMPARE(bar.value(), step.second); // by the timer, which never stops
        }
        dialog.done = 4; // past 100, which the bar does not take
        tick(dialog);
        QCOMPARE(bar.value(), 100);
        dialog.done = Q_INT64_C(9223372036854775807);
        tick(dialog);
        QCOMPARE(bar.value(), 100);
    }

    void growingFileIsReadToItsNewEnd()
    {
        const qint64 bytes = Q_INT64_C(64) << 20;
        const QString path = m_dir.sparseFile(QStringLiteral("growing"), bytes);
        const Checksum dialog(nullptr, path);
        makeLonger(path, bytes + 40000);
        QTRY_COMPARE_WITH_TIMEOUT(dialog.running, 0, 60000);
        QCOMPARE(dialog.total, bytes);
        QCOMPARE(dialog.done, bytes + 40000);
        compareWithZeros(dialog, bytes + 40000);
    }

    void shrinkingFileIsReadToItsNewEnd()
    {
        const qint64 bytes = Q_INT64_C(256) << 20;
        const QString path = m_dir.sparseFile(QStringLiteral("shrinking"), bytes);
        const Checksum dialog(nullptr, path);
        makeLonger(path, 1000);
        QTRY_COMPARE_WITH_TIMEOUT(dialog.running, 0, 60000);
        QCOMPARE(dialog.total, bytes);
        QVERIFY(dialog.done < bytes);
        compareWithZeros(dialog, dialog.done);
    }

    void cancelShowsThePartialDigests()
    {
        Checksum dialog(nullptr, m_dir.sparseFile(QStringLiteral("large"), Q_INT64_C(1) << 30));
        while (dialog.done < 1000000) { }
        okButton(dialog).click();
        QCOMPARE(dialog.running, 0);
        QCOMPARE(okButton(dialog).text(), QStringLiteral("&OK"));
        QVERIFY(dialog.isVisible());
        QCOMPARE(md5(dialog), QString());
        QTRY_VERIFY(!md5(dialog).isEmpty());
        QVERIFY(dialog.done < dialog.total);
        compareWithZeros(dialog, dialog.done);
        okButton(dialog).click();
        QVERIFY(!dialog.isVisible());
    }

    void clipboardTakesNameAndDigests()
    {
        const QString path = m_dir.file(QStringLiteral("a"), "abc");
        const Checksum dialog(nullptr, path);
        auto& copy = formChild<QPushButton>(dialog, "CopyClipButton");
        copy.click();
        QCOMPARE(QGuiApplication::clipboard()->text(), path + QStringLiteral("\nMD5:  \nSHA1: "));
        QTRY_COMPARE(dialog.running, 0);
        copy.click();
        QCOMPARE(QGuiApplication::clipboard()->text(QClipboard::Clipboard),
            path
                + QStringLiteral("\nMD5:  900150983cd24fb0d6963f7d28e17f72"
                                 "\nSHA1: a9993e364706816aba3e25717850c26c9cd0d89d"));
        QVERIFY(dialog.isVisible());
    }

    void unreadableFileIsToldAndTheDialogCloses_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("missing") << "missing";
        QTest::newRow("not permitted") << "closed";
        QTest::newRow("folder") << "folder";
        QTest::newRow("name like HTML") << "<b>x</b>";
    }
    void unreadableFileIsToldAndTheDialogCloses()
    {
        QFETCH(QString, name);
        m_dir.setMode(QString(), 0755);
        m_dir.file(QStringLiteral("closed"), "abc", 0);
        m_dir.folder(QStringLiteral("folder"));
        const AsNobody nobody;
        const QString path = m_dir.path(name);
        QFile file(path);
        QVERIFY(!file.open(QIODevice::ReadOnly));

        BoxAnswers answers;
        bool shownBefore = false;
        answers
            .meanwhile([&shownBefore] {
                auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                const auto* dialog = qobject_cast<Checksum*>(box->parentWidget());
                shownBefore = dialog != nullptr && dialog->isVisible() && dialog->isModal();
                QCOMPARE(box->textFormat(), Qt::PlainText);
            })
            .click(QStringLiteral("OK"));
        Checksum dialog(nullptr, path);
        QVERIFY(shownBefore);
        QCOMPARE(answers.seen().size(), 1);
        const BoxAnswers::Box& box = answers.seen().constFirst();
        QCOMPARE(box.icon, QMessageBox::Critical);
        QCOMPARE(box.title, QStringLiteral("Error"));
        QCOMPARE(box.buttons, QStringList{QStringLiteral("OK")});
        QCOMPARE(box.text,
            QStringLiteral("File: ") + path + QStringLiteral("\nCannot be read.\n") + file.errorString());
        QVERIFY(dialog.isVisible()); // the close is queued
        dialog.exec();
        QVERIFY(!dialog.isVisible());
        QTRY_COMPARE(md5(dialog), emptyMd5); // the worker was started all the same
        QCOMPARE(sha1(dialog), emptySha1);
    }

    void specialFilesDoNotBlock()
    {
        const Checksum dialog(nullptr, m_dir.fifo(QStringLiteral("fifo")));
        QTRY_COMPARE(dialog.running, 0);
        QCOMPARE(md5(dialog), emptyMd5);
    }

    void endlessFileIsCancelled()
    {
        Checksum dialog(nullptr, QStringLiteral("/dev/zero"));
        QCOMPARE(dialog.total, 0);
        QTRY_VERIFY(dialog.done > 1000000);
        okButton(dialog).click();
        QTRY_VERIFY(!md5(dialog).isEmpty());
        compareWithZeros(dialog, dialog.done);
    }

    void everyWayToCloseStopsTheWork_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("Escape") << static_cast<int>(Qt::Key_Escape);
        QTest::newRow("title bar") << 0;
    }
    void everyWayToCloseStopsTheWork()
    {
        QFETCH(int, key);
        Checksum dialog(nullptr, m_dir.sparseFile(QStringLiteral("large"), Q_INT64_C(5) << 30));
        QTimer::singleShot(0, &dialog, [&dialog, key] {
            QCOMPARE(dialog.running, 1);
            if (key != 0) {
                QTest::keyClick(&dialog, static_cast<Qt::Key>(key));
            } else {
                dialog.close();
            }
        });
        QCOMPARE(dialog.exec(), static_cast<int>(QDialog::Rejected));
        QCOMPARE(dialog.running, 0);
        QTRY_VERIFY(!md5(dialog).isEmpty());
        QVERIFY(dialog.done < dialog.total);
    }

    void keyboardAloneWorksIt()
    {
        Checksum dialog(nullptr, m_dir.sparseFile(QStringLiteral("large"), Q_INT64_C(1) << 30));
        QTest::keyClick(&dialog, Qt::Key_Return);
        QCOMPARE(dialog.running, 0);
        QVERIFY(dialog.isVisible());
        QTest::keyClick(&dialog, Qt::Key_Return);
        QVERIFY(!dialog.isVisible());
        QSet<QWidget*> reached;
        for (QWidget* widget = dialog.nextInFocusChain(); widget != &dialog;
             widget = widget->nextInFocusChain()) {
            if ((widget->focusPolicy() & Qt::TabFocus) != 0) {
                reached.insert(widget);
            }
        }
        QCOMPARE(reached.size(), 5); // two buttons and three fields
    }

    void noThreadToBeHad()
    {
        NoThread noThread(m_dir.path());
        Checksum dialog(nullptr, m_dir.file(QStringLiteral("a"), "abc"));
        noThread.run(&dialog, [&dialog] {
            QCOMPARE(md5(dialog) + sha1(dialog), QString());
            QCOMPARE(formChild<QProgressBar>(dialog, "progressBar").value(), 0);
        });
        QCOMPARE(dialog.running, 0);
        QCOMPARE(md5(dialog) + sha1(dialog), QString());
    }

    void noThreadForAFileThatCannotBeRead()
    {
        NoThread noThread(m_dir.path());
        noThread.boxes.click(QStringLiteral("OK"));
        Checksum dialog(nullptr, m_dir.path(QStringLiteral("missing")));
        dialog.exec();
        QCOMPARE(noThread.boxes.seen().size(), 1); // about the file
        QTRY_COMPARE(dialog.running, 0);
        QVERIFY(!dialog.isVisible());
    }

    void threadsEndWithTheirDialogs()
    {
        const QString path = m_dir.sparseFile(QStringLiteral("large"), Q_INT64_C(4) << 20);
        const int descriptors = descriptorCount();
        for (int round = 0; round < 100; ++round) {
            Checksum dialog(nullptr, path);
            if (round % 4 == 1) {
                QTRY_COMPARE(dialog.running, 0);
                QTRY_COMPARE(threadCount(), m_threads + 1); // it waits for the dialog
            } else if (round % 4 == 2) {
                dialog.close();
            } else if (round % 4 == 3) {
                okButton(dialog).click();
            }
        }
        QTRY_COMPARE(threadCount(), m_threads); // the system takes a moment to forget a thread
        QCOMPARE(descriptorCount(), descriptors);
    }

    void memoryIsOneBlockWhateverTheSize()
    {
        const Checksum dialog(nullptr, m_dir.sparseFile(QStringLiteral("large"), Q_INT64_C(256) << 20));
        const long before = residentKib();
        QTRY_COMPARE_WITH_TIMEOUT(dialog.running, 0, 60000);
        QVERIFY2(residentKib() - before < 16384, qPrintable(QString::number(residentKib() - before)));
    }
};

VANTREL_TEST_MAIN(TestChecksum)
#include "tst_Checksum.moc"
