#include "info/MProperties.h"

#include "app/TextHelpers.h"
#include "tests/support/FormChild.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDateTime>
#include <QFileIconProvider>
#include <QLabel>
#include <QLineEdit>
#include <QMimeDatabase>
#include <QPushButton>
#include <QStorageInfo>
#include <QTimer>

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString value(const MProperties& dialog, const char* name)
{
    return formChild<QLabel>(dialog, name).text();
}

} // namespace

class TestMProperties : public QObject
{
    Q_OBJECT

private:
    TestDir m_dir;

private slots:
    void initTestCase()
    {
        m_dir.file(QStringLiteral("a.txt"), "abc");
        m_dir.file(QStringLiteral("script"), "#!/bin/sh\necho\n");
        m_dir.file(QStringLiteral("data"), QByteArray("\0\1\2\3", 4));
        m_dir.fifo(QStringLiteral("fifo"));
        m_dir.folder(QStringLiteral("folder"));
        m_dir.link(QStringLiteral("link"), QStringLiteral("a.txt"));
        m_dir.link(QStringLiteral("folder link"),
            QStringLiteral("../") + QFileInfo(m_dir.path()).fileName() + QStringLiteral("/folder"));
        m_dir.link(QStringLiteral("broken"), QStringLiteral("/no/where"));
    }

    void formIsTheDescribedOne()
    {
        QWidget parent;
        const QString path = m_dir.file(QStringLiteral("a.txt"), "abc");
        const MProperties dialog(&parent, path);
        QCOMPARE(dialog.parentWidget(), &parent);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Properties"));
        QCOMPARE(dialog.size(), QSize(600, 400));
        QVERIFY(dialog.layout() == nullptr);
        const auto& field = formChild<QLineEdit>(dialog, "ReadOnly");
        QCOMPARE(field.text(), path);
        QVERIFY(field.isReadOnly());
        QCOMPARE(dialog.findChildren<QLineEdit*>().size(), 1);
        QCOMPARE(dialog.findChildren<QPushButton*>().size(), 1);
        const auto& button = formChild<QPushButton>(dialog, "pushButton");
        QCOMPARE(button.text(), QStringLiteral("&OK"));
        QVERIFY(button.isDefault());
        QStringList captions;
        for (const QLabel* label : dialog.findChildren<QLabel*>()) {
            if (label->text().endsWith(QLatin1Char(':'))) {
                captions.append(label->text());
            }
        }
        QCOMPARE(captions,
            (QStringList{QStringLiteral("Type:"), QStringLiteral("Size:"), QStringLiteral("Created:"),
                QStringLiteral("Modified:"), QStringLiteral("Accessed:"), QStringLiteral("Group:Owner:"),
                QStringLiteral("Permissions:"), QStringLiteral("Device:"), QStringLiteral("Filesystem:")}));
    }

    void valuesStandBesideTheirCaptions()
    {
        const MProperties dialog(nullptr, m_dir.file(QStringLiteral("a.txt"), "abc"));
        for (const char* name : {"Type", "Size", "Created", "Modified", "Accessed", "Owner", "Permissions",
                 "Device", "Filesystem"}) {
            const auto& caption = formChild<QLabel>(dialog, (QByteArray("caption_") + name).constData());
            const auto& text = formChild<QLabel>(dialog, (QByteArray("label_") + name).constData());
            QCOMPARE(caption.y(), text.y());
            QVERIFY(caption.geometry().right() < text.x());
            QCOMPARE(text.textFormat(), Qt::PlainText);
            QVERIFY(dialog.rect().contains(text.geometry()));
        }
    }

    void type_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("type");
        QTest::newRow("by name") << "a.txt"
                                 << "File: text/plain";
        QTest::newRow("by contents") << "script"
                                     << "File: application/x-shellscript";
        QTest::newRow("of no kind") << "data"
                                    << "File: application/octet-stream";
        QTest::newRow("FIFO") << "fifo"
                              << "File: inode/fifo";
        QTest::newRow("folder") << "folder"
                                << "Directory";
        QTest::newRow("link to file") << "link"
                                      << "Link to: a.txt";
        QTest::newRow("link to folder") << "folder link"
                                        << "Link to: ../" + QFileInfo(m_dir.path()).fileName() + "/folder";
        QTest::newRow("broken link") << "broken"
                                     << "Link to: /no/where";
        QTest::newRow("nothing") << "nothing"
                                 << "";
    }
    void type()
    {
        QFETCH(QString, name);
        const MProperties dialog(nullptr, m_dir.path(name));
        QTEST(value(dialog, "label_Type"), "type");
    }

    void size_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << Q_INT64_C(0) << "0 bytes";
        QTest::newRow("one") << Q_INT64_C(1) << "1 bytes";
        QTest::newRow("grouped") << Q_INT64_C(1234567) << "1,234,567 bytes";
        QTest::newRow("large") << Q_INT64_C(6000000000) << "6,000,000,000 bytes";
    }
    void size()
    {
        QFETCH(qint64, bytes);
        const MProperties dialog(nullptr, m_dir.sparseFile(QStringLiteral("sized"), bytes));
        QTEST(value(dialog, "label_Size"), "text");
    }

    void sizeOfAFolderIsItsOwn()
    {
        m_dir.file(QStringLiteral("sub/large"), QByteArray(100000, 'x'));
        struct stat info
        {
        };
        QCOMPARE(::stat(QFile::encodeName(m_dir.path(QStringLiteral("sub"))).constData(), &info), 0);
        const MProperties dialog(nullptr, m_dir.path(QStringLiteral("sub")));
        QCOMPARE(value(dialog, "label_Size"),
            QLocale(QLocale::English).toString(qint64(info.st_size)) + QStringLiteral(" bytes"));
    }

    void times()
    {
        const QString path = m_dir.file(QStringLiteral("timed"), "abc");
        const timespec accessAndChange[2] = {{1000000000, 0}, {86399, 0}};
        QCOMPARE(::utimensat(0, QFile::encodeName(path).constData(), accessAndChange, 0), 0);
        const MProperties dialog(nullptr, path);
        QCOMPARE(value(dialog, "label_Accessed"), QStringLiteral("2001-09-09 01:46:40"));
        QCOMPARE(value(dialog, "label_Modified"), QStringLiteral("1970-01-01 23:59:59"));
        const QDateTime birth = QFileInfo(path).birthTime();
        QCOMPARE(value(dialog, "label_Created"), birth.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")));
        if (birth.isValid()) {
            QCOMPARE(value(dialog, "label_Created").size(), 19);
        }
    }

    void groupThenOwner()
    {
        const QString path = m_dir.file(QStringLiteral("owned"), "abc");
        const QString owner = QString::fromLocal8Bit(::getpwuid(::getuid())->pw_name);
        if (::getuid() == 0) {
            QCOMPARE(::chown(QFile::encodeName(path).constData(), 0, 1), 0);
            const QString group = QString::fromLocal8Bit(::getgrgid(1)->gr_name);
            const MProperties dialog(nullptr, path);
            QCOMPARE(value(dialog, "label_Owner"), group + QLatin1Char(':') + owner);
        } else {
            const QString group = QString::fromLocal8Bit(::getgrgid(::getgid())->gr_name);
            const MProperties dialog(nullptr, path);
            QCOMPARE(value(dialog, "label_Owner"), group + QLatin1Char(':') + owner);
        }
    }

    void unknownOwnerIsEmpty()
    {
        const QString path = m_dir.file(QStringLiteral("unowned"), "abc");
        if (::chown(QFile::encodeName(path).constData(), 54321, 54321) != 0) {
            QSKIP("giving a file away needs root");
        }
        const MProperties dialog(nullptr, path);
        QCOMPARE(value(dialog, "label_Owner"),
            QFileInfo(path).group() + QLatin1Char(':') + QFileInfo(path).owner());
    }

    void permissions_data()
    {
        QTest::addColumn<uint>("mode");
        QTest::addColumn<QString>("digits");
        QTest::newRow("usual") << 0644U << "644";
        QTest::newRow("none") << 0U << "000";
        QTest::newRow("others only") << 0004U << "004";
        QTest::newRow("no set-id bits") << 06755U << "755";
    }
    void permissions()
    {
        QFETCH(uint, mode);
        const MProperties dialog(nullptr, m_dir.file(QStringLiteral("moded"), "abc", mode));
        QTEST(value(dialog, "label_Permissions"), "digits");
    }

    void volumeIsThatOfThePath_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("folder") << m_dir.path();
        QTest::newRow("proc") << "/proc/self/status";
        QTest::newRow("nothing") << m_dir.path(QStringLiteral("nothing"));
    }
    void volumeIsThatOfThePath()
    {
        QFETCH(QString, path);
        const MProperties dialog(nullptr, path);
        const QStorageInfo volume(path);
        QCOMPARE(value(dialog, "label_Device"), QString::fromLocal8Bit(volume.device()));
        QCOMPARE(value(dialog, "label_Filesystem"), QString::fromLocal8Bit(volume.fileSystemType()));
        if (path.startsWith(QLatin1String("/proc"))) {
            QCOMPARE(value(dialog, "label_Filesystem"), QStringLiteral("proc"));
        }
    }

    void icon_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("file") << "a.txt";
        QTest::newRow("folder") << "folder";
    }
    void icon()
    {
        QFETCH(QString, name);
        const MProperties dialog(nullptr, m_dir.path(name));
        const QIcon expected = QFileIconProvider().icon(QFileInfo(m_dir.path(name)));
        const QSize size = expected.actualSize(QSize(64, 64));
        const auto& label = formChild<QLabel>(dialog, "label_Icon");
        QVERIFY(label.pixmap(Qt::ReturnByValue).toImage() == expected.pixmap(size).toImage());
        QVERIFY(!label.pixmap(Qt::ReturnByValue).isNull());
        QVERIFY(label.width() >= 64 && label.height() >= 64);
    }

    void vanishedFileShowsNothing()
    {
        const MProperties dialog(nullptr, m_dir.path(QStringLiteral("nothing")));
        QCOMPARE(value(dialog, "label_Size"), QStringLiteral("0 bytes"));
        QCOMPARE(value(dialog, "label_Modified"), QString());
        QCOMPARE(value(dialog, "label_Created"), QString());
        QCOMPARE(value(dialog, "label_Accessed"), QString());
        QCOMPARE(value(dialog, "label_Owner"), QStringLiteral(":"));
        QCOMPARE(value(dialog, "label_Permissions"), QStringLiteral("000"));
        QCOMPARE(value(dialog, "label_Device"), QString());
    }

    void closes_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("Return") << static_cast<int>(Qt::Key_Return);
        QTest::newRow("Escape") << static_cast<int>(Qt::Key_Escape);
        QTest::newRow("button") << 0;
    }
    void closes()
    {
        QFETCH(int, key);
        MProperties dialog(nullptr, m_dir.path());
        bool wasModal = false;
        QTimer::singleShot(0, &dialog, [&] {
            wasModal = QApplication::activeModalWidget() == &dialog;
            if (key == 0) {
                QTest::mouseClick(&formChild<QPushButton>(dialog, "pushButton"), Qt::LeftButton);
            } else {
                QTest::keyClick(&dialog, static_cast<Qt::Key>(key));
            }
        });
        dialog.exec();
        QVERIFY(wasModal);
        QVERIFY(!dialog.isVisible());
    }
};

VANTREL_TEST_MAIN(TestMProperties)
#include "tst_MProperties.moc"
