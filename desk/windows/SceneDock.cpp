// SPDX-License-Identifier: MIT
// The tree's view: the scene's selection, toggles, dragging out, the menu of a row.
#include "desk/windows/SceneDock.h"

#include "desk/model/ModelDrag.h"
#include "desk/model/ZDeskSession.h"
#include "zdesktop/ZDragAndDrop.h"

#include <QContextMenuEvent>
#include <QDrag>
#include <QHeaderView>
#include <QItemSelection>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QMouseEvent>

#include <algorithm>
#include <unordered_set>

namespace {
constexpr int kToggleWidth = 26;
constexpr int kMostOpenRows = 300; ///< a scene of no more rows than this is shown opened
} // namespace

SceneTreeView::SceneTreeView(ZDeskSession& desk, QWidget* parent)
    : QTreeView(parent), m_desk(desk), m_model(new SceneTreeModel(desk, this))
{
    setObjectName(QStringLiteral("SceneTree"));
    setAccessibleName(tr("Scene"));
    setModel(m_model);
    setUniformRowHeights(true);
    setSelectionMode(ExtendedSelection);
    setDragEnabled(true);
    setDragDropMode(DragOnly);
    setEditTriggers(NoEditTriggers);
    setIndentation(14);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(SceneTreeModel::kName, QHeaderView::Stretch);
    header()->setMinimumSectionSize(kToggleWidth);
    for (const int column : {SceneTreeModel::kShown, SceneTreeModel::kLocked}) {
        header()->setSectionResizeMode(column, QHeaderView::Fixed);
        header()->resizeSection(column, kToggleWidth);
    }
    header()->hide();
    Sync();
}

void SceneTreeView::Sync()
{
    m_following = true;
    if (m_model->BringUpToDate() && m_model->Tree().GetRows().size() <= kMostOpenRows)
        expandAll();
    FollowSelection();
    m_following = false;
    viewport()->update();
}

void SceneTreeView::FollowSelection()
{
    const auto& rows = m_model->Tree().GetRows();
    std::vector<int> inScene, inView;
    for (size_t row = 0; row < rows.size(); ++row)
        if (rows[row].model->IsSelected())
            inScene.push_back(static_cast<int>(row));
    for (const QModelIndex& index : selectionModel()->selectedRows())
        inView.push_back(static_cast<int>(index.internalId()));
    std::sort(inView.begin(), inView.end());
    if (inScene == inView)
        return;
    QItemSelection selection;
    for (const int row : inScene)
        selection.select(m_model->IndexOf(row), m_model->IndexOf(row));
    selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    if (inScene.empty())
        return;
    selectionModel()->setCurrentIndex(m_model->IndexOf(inScene.front()), QItemSelectionModel::NoUpdate);
    scrollTo(currentIndex());
}

std::vector<ZModel*> SceneTreeView::SelectedModels() const
{
    std::vector<ZModel*> models;
    for (const QModelIndex& index : selectionModel()->selectedRows())
        models.push_back(m_model->ModelAt(index));
    return models;
}

void SceneTreeView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    if (m_following)
        return;
    const std::vector<ZModel*> chosen = SelectedModels();
    const std::unordered_set<const ZModel*> isChosen(chosen.begin(), chosen.end());
    // What is no longer selected goes first: whoever hears of a new selection sees it whole.
    for (const ZSceneRow& row : m_model->Tree().GetRows())
        if (isChosen.count(row.model) == 0)
            row.model->SetSelected(false);
    for (ZModel* const model : chosen)
        model->SetSelected(true);
    m_desk.AfterEvent();
}

bool SceneTreeView::ToggleAt(const QModelIndex& index)
{
    if (!index.isValid() || index.column() == SceneTreeModel::kName)
        return false;
    m_model->Toggle(index);
    return true;
}

void SceneTreeView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !ToggleAt(indexAt(event->pos())))
        QTreeView::mousePressEvent(event);
}

void SceneTreeView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space && ToggleAt(currentIndex()))
        return;
    QTreeView::keyPressEvent(event);
}

void SceneTreeView::ForSelected(const std::function<void(ZModel&)>& change)
{
    for (ZModel* const model : SelectedModels())
        change(*model);
    m_desk.AfterEvent();
}

void SceneTreeView::contextMenuEvent(QContextMenuEvent* event)
{
    const std::vector<ZModel*> models = SelectedModels();
    if (models.empty())
        return;
    ZModel& first = *models.front();
    const bool hide = !first.IsHidden(), lock = !first.IsLocked();
    QMenu menu(this);
    menu.addAction(tr("Frame"), this, [this, models] {
        m_desk.Session().GetViewer().Frame(models);
        m_desk.AfterEvent();
    });
    menu.addAction(hide ? tr("Hide") : tr("Show"), this,
                   [this, hide] { ForSelected([hide](ZModel& m) { m.SetHidden(hide); }); });
    menu.addAction(lock ? tr("Lock") : tr("Unlock"), this,
                   [this, lock] { ForSelected([lock](ZModel& m) { m.SetLocked(lock); }); });
    menu.addSeparator();
    menu.addAction(tr("Delete from the scene..."), this, [this, models] {
        const QString question =
            models.size() == 1
                ? tr("Delete %1 from the scene? This cannot be undone; the file keeps it.")
                      .arg(QString::fromUtf8(models.front()->GetObjectLabelName()))
                : tr("Delete %1 models from the scene? This cannot be undone; the file keeps them.").arg(models.size());
        if (QMessageBox::question(this, tr("Delete"), question) != QMessageBox::Yes)
            return;
        for (ZModel* const model : models)
            if (m_desk.Session().GetScene().Contains(model))
                m_desk.Session().GetScene().DeleteModel(model);
        m_desk.AfterEvent();
    });
    menu.exec(event->globalPos());
}

void SceneTreeView::startDrag(Qt::DropActions)
{
    const std::vector<ZModel*> models = SelectedModels();
    if (models.empty())
        return;
    GlobalDragAndDrop_Begin();
    for (ZModel* const model : models)
        GlobalDragAndDrop_Add(model, 0);
    auto* const drag = new QDrag(this);
    auto* const announced = new QMimeData;
    announced->setData(QString::fromLatin1(kModelDragFormat), "models");
    drag->setMimeData(announced);
    drag->exec(Qt::CopyAction);
    GlobalDragAndDrop_End();
    m_desk.AfterEvent();
}
