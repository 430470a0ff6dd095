#pragma once

#include "panel/AccessibleParts.h"

#include <QAccessibleWidget>

#include <memory>

/// What assistive technology is told alike of the listing and of the tree: a table of the parts that it has
/// asked for, without a caption and without headers of rows. It exists only where assistive technology asks.
/// GUI thread only.
class AccessibleView : public QAccessibleWidget, public QAccessibleTableInterface
{
public:
    /// @param owner an MList or an MTree
    AccessibleView(QAbstractItemView* owner, QAccessible::Role role);
    ~AccessibleView() override;

    void* interface_cast(QAccessible::InterfaceType type) override;
    QAccessibleInterface* focusChild() const override;
    int indexOfChild(const QAccessibleInterface* part) const override;

    QAccessibleInterface* caption() const override { return nullptr; }
    QAccessibleInterface* summary() const override { return nullptr; }
    QString rowDescription(int row) const override;

    void modelChange(QAccessibleTableModelChangeEvent* event) override;

    /// @return parts that are kept for assistive technology
    int keptParts() const;

protected:
    /// Lets Qt make an Accessible for every View from now on; may be called any number of times.
    template <typename Accessible, typename View>
    static void installFor()
    {
        QAccessible::installFactory(make<Accessible, View>);
    }
    AccessibleParts& parts() const { return *m_parts; }

private:
    /// Qt asks for each class that an object inherits, from its own on.
    template <typename Accessible, typename View>
    static QAccessibleInterface* make(const QString& className, QObject* object)
    {
        auto* view = className == QLatin1String(View::staticMetaObject.className())
            ? qobject_cast<View*>(object)
            : nullptr;
        return view != nullptr ? new Accessible(view) : nullptr; // owned by Qt's cache
    }

    std::unique_ptr<AccessibleParts> m_parts;
};
