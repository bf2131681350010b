// SPDX-License-Identifier: MIT
// The scene as a tree: what is in it, what is selected, hidden and locked.
#pragma once

#include "desk/model/ZSceneTree.h"

#include <QAbstractItemModel>
#include <QTreeView>

#include <functional>

class ZDeskSession;

/// The rows of the scene for an item view. Column 0 is the name, 1 whether the model is shown, 2 whether it is locked.
class SceneTreeModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    enum Column
    {
        kName,
        kShown,
        kLocked,
        kColumnCount
    };

    SceneTreeModel(ZDeskSession& desk, QObject* parent);
    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& = {}) const override { return kColumnCount; }
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    /// The other way round than it was: shown or hidden, locked or free.
    void Toggle(const QModelIndex& index);
    ZModel* ModelAt(const QModelIndex& index) const;
    QModelIndex IndexOf(int row) const;
    const ZSceneTree& Tree() const { return m_tree; }
    /// Builds the rows anew when models came or went; answers whether they did.
    bool BringUpToDate();

private:
    QVariant Icon(const ZModel& model, int column) const;

    ZDeskSession& m_desk;
    ZSceneTree m_tree;
};

/// The tree: its selection is the scene's, both ways; models are dragged out of it with the left button.
class SceneTreeView : public QTreeView
{
    Q_OBJECT
public:
    SceneTreeView(ZDeskSession& desk, QWidget* parent);
    /// Follows the scene.
    void Sync();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
    void startDrag(Qt::DropActions actions) override;

private:
    void FollowSelection();
    bool ToggleAt(const QModelIndex& index);
    std::vector<ZModel*> SelectedModels() const;
    void ForSelected(const std::function<void(ZModel&)>& change);

    ZDeskSession& m_desk;
    SceneTreeModel* m_model;
    bool m_following = false; ///< the scene's selection is being shown, not changed
};
