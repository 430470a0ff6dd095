#pragma once

#include "app/aGlobal.h"
#include "app/aVantrel.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/myFileSystemModel.h"

#include <QFileIconProvider>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QHeaderView>
#include <QMainWindow>
#include <QPixmap>
#include <QTableView>

#include <memory>

/// A window with a file list that shows folder after folder.
class OpenCase
{
public:
    OpenCase() = default;
    virtual ~OpenCase() = default;
    Q_DISABLE_COPY_MOVE(OpenCase)

    /// Shows @p folder in the list; another one was shown before.
    virtual void open(const QString& folder) = 0;
    /// @return the lists that show it, with the model that each has now
    virtual QList<QTableView*> views() const = 0;
};

/// The least that a provider can cost: one icon, one text. (With an empty text the model would show no rows.)
class FixedIconProvider : public QFileIconProvider
{
public:
    FixedIconProvider()
    {
        QPixmap pixmap(16, 16);
        pixmap.fill(Qt::gray);
        m_icon = QIcon(pixmap);
    }
    QIcon icon(IconType) const override { return m_icon; }
    QIcon icon(const QFileInfo&) const override { return m_icon; }
    QString type(const QFileInfo&) const override { return m_type; }

private:
    QIcon m_icon;
    QString m_type = QStringLiteral("File");
};

/// A bare model in a bare view, with a new model for each folder, as a panel has it.
class BareCase : public OpenCase
{
public:
    /// @param provider icon provider; null for the standard one
    /// @param folder shown at first
    BareCase(std::unique_ptr<QFileIconProvider> provider, const QString& folder)
        : m_provider(std::move(provider))
        , m_view(new QTableView(&m_window))
    {
        m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
        m_window.setCentralWidget(m_view);
        m_window.resize(1200, 700);
        m_window.show();
        QObject::connect(
            m_view->horizontalHeader(), &QHeaderView::sectionClicked, m_view, [this](int section) {
                m_model->sort(section, m_descendingNext ? Qt::DescendingOrder : Qt::AscendingOrder);
                m_descendingNext = !m_descendingNext;
            });
        BareCase::open(folder);
    }

    void open(const QString& folder) override
    {
        // The view goes on to the new models before the old ones are freed.
        const std::unique_ptr<QFileSystemModel> old = std::move(m_model);
        const std::unique_ptr<QItemSelectionModel> oldSelection(m_view->selectionModel());
        m_model = std::make_unique<QFileSystemModel>();
        if (m_provider) {
            m_model->setIconProvider(m_provider.get());
        }
        m_view->setModel(m_model.get());
        m_view->setRootIndex(m_model->setRootPath(folder));
        m_descendingNext = true;
    }

    QList<QTableView*> views() const override { return {m_view}; }

private:
    std::unique_ptr<QFileIconProvider> m_provider;
    std::unique_ptr<QFileSystemModel> m_model;
    QMainWindow m_window;
    QTableView* m_view; ///< child of m_window
    bool m_descendingNext = true;
};

/// Vantrel's main window. Both panels are rooted at the folder that holds the measured ones.
class PanelCase : public OpenCase
{
public:
    enum Way {
        ByCall, ///< the first panel opens the folder as its tree and its bars do
        ByDoubleClick, ///< a double-click on the folder in the first panel's list
        InBoth ///< both panels open it at once
    };

    PanelCase(Way way, const QString& parentFolder)
        : m_way(way)
    {
        gstDrives.append(LSDRIVE{parentFolder, QStringLiteral("bench")});
        m_window = std::make_unique<aVantrel>();
        m_window->showNormal();
        m_window->resize(1200, 700);
    }

    void open(const QString& folder) override
    {
        if (m_way == ByDoubleClick) {
            doubleClick(folder);
            return;
        }
        gwPanel1->treeRowChanged(folder);
        if (m_way == InBoth) {
            gwPanel2->treeRowChanged(folder);
        }
    }

    QList<QTableView*> views() const override
    {
        return m_way == InBoth ? QList<QTableView*>{gwPanel1->list, gwPanel2->list}
                               : QList<QTableView*>{gwPanel1->list};
    }

private:
    /// The folder is one of those listed, or the way up.
    static void doubleClick(const QString& folder)
    {
        const QModelIndex root = gwPanel1->list->rootIndex();
        const QString shown = gwPanel1->listModel->filePath(root);
        const QString name = folder.startsWith(shown + QLatin1Char('/')) ? QFileInfo(folder).fileName()
                                                                         : QStringLiteral("..");
        for (int row = 0; row < gwPanel1->listModel->rowCount(root); ++row) {
            const QModelIndex index = gwPanel1->listModel->index(row, 0, root);
            if (gwPanel1->listModel->entryName(index) == name) {
                gwPanel1->on_ListView_DoubleClicked(index);
                return;
            }
        }
        qFatal("%s is not listed", qPrintable(folder));
    }

    Way m_way;
    std::unique_ptr<aVantrel> m_window;
};
