#include "app/PathLabel.h"
#include "app/ReadConfig.h"
#include "app/aGlobal.h"
#include "commands/DialogNewDir.h"
#include "commands/Rename.h"
#include "fileops/MCopy.h"
#include "fileops/MProgress.h"
#include "info/Checksum.h"
#include "info/DialogFileSize.h"
#include "info/MProperties.h"
#include "tests/support/TestMain.h"

#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>

#include <memory>

/// The dialogs have fixed places for what they show: there is room for it in each font that desktops come
/// with.
class TestDialogRoom : public QObject
{
    Q_OBJECT

private slots:
    void room_data();
    void room();
};

namespace {

const QStringList roomyDialogs
    = {"copy", "new folder", "rename", "properties", "disk usage", "checksums", "progress"};

/// The path that is shown where it may take several lines.
const QString longPath
    = QStringLiteral("/home/sam/Letters and other papers/of the year before last/to be sent/")
    + QStringLiteral("to the landlord about the roof of the shed, with pictures.odt");

std::unique_ptr<QDialog> roomyDialog(const QString& name)
{
    switch (roomyDialogs.indexOf(name)) {
    case 0:
        return std::make_unique<MCopy>(nullptr);
    case 1:
        return std::make_unique<DialogNewDir>(nullptr, QStringLiteral("/home/sam"));
    case 2:
        return std::make_unique<Rename>(nullptr, QStringLiteral("/home/sam/notes.txt"));
    case 3:
        return std::make_unique<MProperties>(nullptr, QStringLiteral("/bin/sh"));
    case 4:
        return std::make_unique<DialogFileSize>(nullptr, longPath);
    case 5:
        return std::make_unique<Checksum>(nullptr, QStringLiteral("/bin/sh"));
    default:
        return std::make_unique<MProgress>(nullptr, OpCopy);
    }
}

QSize needed(const QLabel* label)
{
    const QSize hint = label->sizeHint();
    if (label->wordWrap()) {
        return {0, label->heightForWidth(label->width())};
    }
    return dynamic_cast<const PathLabel*>(label) != nullptr ? QSize(0, hint.height()) : hint;
}

/// What has less room than it needs.
template <typename Widget, typename Needs>
QStringList tight(const QDialog* dialog, Needs needs)
{
    QStringList found;
    const QList<Widget*> children = dialog->findChildren<Widget*>();
    for (const Widget* child : children) {
        const QSize size = needs(child);
        if (size.width() > child->width() || size.height() > child->height()) {
            found.append(QStringLiteral("%1 has %2 x %3 and needs %4 x %5")
                             .arg(child->objectName())
                             .arg(child->width())
                             .arg(child->height())
                             .arg(size.width())
                             .arg(size.height()));
        }
    }
    return found;
}

} // namespace

void TestDialogRoom::room_data()
{
    QTest::addColumn<QString>("example");
    QTest::addColumn<int>("pixels");
    QTest::addColumn<QString>("name");
    for (const char* example : {"", "Vantrel.starter", "Vantrel.dark"}) {
        for (const int pixels : {12, 13, 15, 18}) { // of 9, 10 and 11 points; of 11 on a screen of 120 dots
            for (const QString& name : roomyDialogs) {
                QTest::addRow("%s, %s, %d pixels", qPrintable(name), example, pixels)
                    << QString::fromLatin1(example) << pixels << name;
            }
        }
    }
}

void TestDialogRoom::room()
{
    QFETCH(QString, example);
    QFETCH(int, pixels);
    QFETCH(QString, name);
    gsAppStyleSheet.clear();
    if (!example.isEmpty()) {
        ReadConfig(QFINDTESTDATA(QStringLiteral("../../examples/") + example));
    }
    const QFont before = QApplication::font();
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(pixels);
    QApplication::setFont(font);
    qApp->setStyleSheet(gsAppStyleSheet);
    gslDragList.clear();

    std::unique_ptr<QDialog> dialog = roomyDialog(name);
    dialog->show();
    QTimerEvent refresh(-1); // whatever timer
    QCoreApplication::sendEvent(dialog.get(), &refresh);
    QStringList found = tight<QLabel>(dialog.get(), needed);
    const auto hint = [](const QWidget* widget) { return widget->sizeHint(); };
    const auto height = [](const QWidget* widget) { return QSize(0, widget->sizeHint().height()); };
    const auto checksum = [](const QWidget* field) {
        constexpr int frames = 12;
        return QSize(field->fontMetrics().horizontalAdvance(QString(40, QLatin1Char('0'))) + frames, 0);
    };
    if (name == QLatin1String("checksums")) {
        found += tight<QLineEdit>(dialog.get(), checksum);
    }
    found += tight<QPushButton>(dialog.get(), hint);
    found += tight<QLineEdit>(dialog.get(), height);
    found += tight<QProgressBar>(
        dialog.get(), [](const QWidget* bar) { return QSize(0, bar->fontMetrics().height()); });
    dialog.reset();
    qApp->setStyleSheet(QString());
    QApplication::setFont(before);
    QCOMPARE(found.join(QLatin1Char('\n')), QString());
}

VANTREL_TEST_MAIN(TestDialogRoom)
#include "tst_DialogRoom.moc"
