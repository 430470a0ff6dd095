#include "panel/MNavBar.h"

#include "panel/BarButtons.h"
#include "panel/MPanel.h"

#include <QPushButton>
#include <QSignalMapper>

namespace {

const QString& navBarName()
{
    static const QString name = QStringLiteral("NavBar");
    return name;
}

} // namespace

MNavBar::MNavBar(QWidget* parent)
    : QWidget(parent)
    , panel(parent)
    , mapper(new QSignalMapper(this))
    , charWidth(averageDigitWidth(this, navBarName(), true))
{
    setAccessibleName(QStringLiteral("Path bar"));
    setAttribute(Qt::WA_StyledBackground); // else a style sheet's rule for this class would paint nothing
}

void MNavBar::deleteButtons()
{
    for (QPushButton* button : qAsConst(buttons)) {
        if (button->isDown()) {
            // This is the button whose press opens the folder: it is still needed on the way out of the
            // press.
            button->hide();
            button->disconnect();
            button->deleteLater();
        } else {
            delete button;
        }
    }
    buttons.clear();
}

void MNavBar::SetNavBar(const QString& path)
{
    deleteButtons();
    buttonCount = 0;
    nextX = barLeftMargin;
    const QString full = path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/');
    for (int i = 0;; ++i) {
        const QString section = full.section(QLatin1Char('/'), i, i, QString::SectionIncludeTrailingSep);
        if (section.isEmpty()) {
            break;
        }
        MakeOneButton(section);
    }
    // Made again on every call and never unique, on purpose: one press asks for its folder once for each
    // folder change there was. All but the first time it is open already.
    connect(mapper, SIGNAL(mapped(int)), this, SLOT(buttonPressed(int)));
}

void MNavBar::MakeOneButton(const QString& text)
{
    QPushButton* button = makeBarButton(this, navBarName(), text, true);
    buttons.append(button);
    const int w = static_cast<int>(static_cast<double>(static_cast<float>(text.length()) * charWidth) + 2.0);
    button->setGeometry(nextX, 0, w + 2, height() - 2);
    button->show();
    connect(button, SIGNAL(pressed()), mapper, SLOT(map()));
    mapper->setMapping(button, buttonCount);
    nextX += w; // two less than the width: neighbours overlap on purpose
    ++buttonCount;
}

QString MNavBar::pathUpTo(int index) const
{
    QString path;
    for (int i = 0; i <= index && i < buttons.size(); ++i) {
        path += buttons.at(i)->text();
    }
    path.chop(1);
    return path;
}

void MNavBar::buttonPressed(int index)
{
    auto* owner = static_cast<MPanel*>(panel);
    const QString path = pathUpTo(index);
    if (owner->rootPath.length() > path.length() || path == m_pressedPath) {
        return;
    }
    m_pressedPath = path;
    QMetaObject::invokeMethod(this, "forgetPress", Qt::QueuedConnection);
    owner->treeRowChanged(path);
}

void MNavBar::forgetPress()
{
    m_pressedPath = QString();
}
