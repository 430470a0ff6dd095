#include "tests/support/ContextMenuPanel.h"

#include "tests/support/ModalAnswers.h"

#include <QTest>

namespace {

QStringList labels(const QMenu* menu)
{
    QStringList all;
    const QList<QAction*> actions = menu->actions();
    for (const QAction* action : actions) {
        all.append(action->isSeparator() ? QStringLiteral("-") : action->text());
    }
    return all;
}

} // namespace

void ContextMenuPanel::open()
{
    make();
    dir->folder(QStringLiteral("root/alpha/inner"));
    dir->folder(QStringLiteral("root/beta.d"));
    dir->file(QStringLiteral("root/Report.TXT"), "x");
    dir->file(QStringLiteral("root/Makefile"), "x");
    dir->link(QStringLiteral("root/zlink"), QStringLiteral("alpha"));
    show();
    QVERIFY(waitForTreeRow(panel, root + QStringLiteral("/beta.d")));
}

LSMENU ContextMenuPanel::entry(const QString& label, const QString& types, int code, const QString& command)
{
    return LSMENU{code, types, label, command};
}

ContextMenuPanel::Shown ContextMenuPanel::shownBy(const std::function<void()>& call)
{
    Shown shown;
    ModalAnswers answers;
    answers.meet<QMenu>([&](QMenu* menu) {
        shown.place = menu->pos();
        shown.entries = labels(menu);
        dismiss(menu);
    });
    call();
    return shown;
}

void ContextMenuPanel::dismiss(QMenu* menu)
{
    QTest::keyClick(menu, Qt::Key_Escape);
}

void ContextMenuPanel::choose(QMenu* menu, int row)
{
    QTest::mouseClick(
        menu, Qt::LeftButton, Qt::NoModifier, menu->actionGeometry(menu->actions().at(row)).center());
}
