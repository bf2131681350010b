// SPDX-License-Identifier: MIT
// The scene's rows as an item model.
#include "desk/model/ZDeskSession.h"
#include "desk/windows/Icons.h"
#include "desk/windows/SceneDock.h"

#include <QGuiApplication>
#include <QHash>
#include <QPalette>

SceneTreeModel::SceneTreeModel(ZDeskSession& desk, QObject* parent) : QAbstractItemModel(parent), m_desk(desk)
{
    m_tree.Rebuild(m_desk.Session().GetScene());
}

bool SceneTreeModel::BringUpToDate()
{
    if (!m_tree.IsOutOfDate(m_desk.Session().GetScene()))
        return false;
    beginResetModel();
    m_tree.Rebuild(m_desk.Session().GetScene());
    endResetModel();
    return true;
}

QModelIndex SceneTreeModel::IndexOf(int row) const
{
    return row < 0 ? QModelIndex()
                   : createIndex(m_tree.GetRows()[static_cast<size_t>(row)].place, kName, quintptr(row));
}

QModelIndex SceneTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    const std::vector<int>& rows =
        parent.isValid() ? m_tree.GetRows()[static_cast<size_t>(parent.internalId())].children : m_tree.GetTopRows();
    if (row < 0 || row >= static_cast<int>(rows.size()) || column < 0 || column >= kColumnCount)
        return {};
    return createIndex(row, column, quintptr(rows[static_cast<size_t>(row)]));
}

QModelIndex SceneTreeModel::parent(const QModelIndex& index) const
{
    return index.isValid() ? IndexOf(m_tree.GetRows()[static_cast<size_t>(index.internalId())].parent) : QModelIndex();
}

int SceneTreeModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return static_cast<int>(m_tree.GetTopRows().size());
    return parent.column() == kName
               ? static_cast<int>(m_tree.GetRows()[static_cast<size_t>(parent.internalId())].children.size())
               : 0;
}

ZModel* SceneTreeModel::ModelAt(const QModelIndex& index) const
{
    return index.isValid() ? m_tree.GetRows()[static_cast<size_t>(index.internalId())].model : nullptr;
}

QVariant SceneTreeModel::Icon(const ZModel& model, int column) const
{
    // Made once for each palette: a tree of thousands of rows asks for them at every painting.
    static QHash<int, QIcon> icons;
    static qint64 palette = 0;
    if (const qint64 present = QGuiApplication::palette().cacheKey(); present != palette) {
        palette = present;
        icons.clear();
    }
    DeskIcon icon = DeskIcon::Node;
    if (column == kShown)
        icon = model.IsHidden() ? DeskIcon::Hidden : DeskIcon::Shown;
    else if (column == kLocked)
        icon = model.IsLocked() ? DeskIcon::Locked : DeskIcon::Free;
    else if (model.GetKind() == ZModelKind::Polymesh)
        icon = DeskIcon::Mesh;
    else if (model.GetKind() == ZModelKind::Nurbs)
        icon = DeskIcon::Surface;
    else if (model.IsBone())
        icon = DeskIcon::Bone;
    const auto found = icons.constFind(int(icon));
    return found != icons.constEnd() ? *found : *icons.insert(int(icon), MakeIcon(icon));
}

QVariant SceneTreeModel::data(const QModelIndex& index, int role) const
{
    const ZModel* const model = ModelAt(index);
    if (model == nullptr)
        return {};
    if (role == Qt::DecorationRole)
        return Icon(*model, index.column());
    const bool off = index.column() == kShown ? model->IsHidden() : !model->IsLocked();
    if (index.column() == kShown && (role == Qt::ToolTipRole || role == Qt::AccessibleTextRole))
        return off ? tr("hidden") : tr("shown");
    if (index.column() == kLocked && (role == Qt::ToolTipRole || role == Qt::AccessibleTextRole))
        return off ? tr("free") : tr("locked: tools do not take it");
    if (index.column() != kName)
        return {};
    if (role == Qt::DisplayRole)
        return QString::fromUtf8(model->GetObjectLabelName());
    if (role == Qt::ToolTipRole)
        return QStringLiteral("%1: %2").arg(QString::fromStdString(ZSceneTree::KindName(*model)),
                                            QString::fromStdString(model->GetPath()));
    return {};
}

QVariant SceneTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::DisplayRole && section == kName)
        return tr("Name");
    if (role == Qt::ToolTipRole)
        return section == kShown    ? tr("Shown or hidden")
               : section == kLocked ? tr("Locked or free")
                                    : tr("Nodes, models and bones");
    return {};
}

Qt::ItemFlags SceneTreeModel::flags(const QModelIndex& index) const
{
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled : Qt::NoItemFlags;
}

void SceneTreeModel::Toggle(const QModelIndex& index)
{
    ZModel* const model = ModelAt(index);
    if (model == nullptr)
        return;
    if (index.column() == kShown) {
        model->SetHidden(!model->IsHidden());
    } else if (index.column() == kLocked) {
        model->SetLocked(!model->IsLocked());
    }
    emit dataChanged(index, index);
    m_desk.AfterEvent();
}
