// SPDX-License-Identifier: MIT
// The widget for a spread: a table whose cells are colours, sliders, check boxes and numbers, edited in place.
#pragma once

#include "desk/widgets/ControlWidget.h"

#include <QAbstractTableModel>

#include <vector>

class ZtSpread;

/// The cells of a spread as an item model; asks the control for what is shown.
class SpreadModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    // Of slider cells only: doubles.
    static constexpr int kSliderRole = Qt::UserRole;
    static constexpr int kSliderMinimumRole = Qt::UserRole + 1;
    static constexpr int kSliderMaximumRole = Qt::UserRole + 2;

    SpreadModel(ZtSpread& spread, const ControlContext& context, QObject* parent);
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// Brings rows and columns up to the control's; answers whether there are others than before.
    bool Refill();

private:
    ZtSpread& m_spread;
    ControlContext m_context;
    int m_rows = 0;
    int m_columns = 0;
};

std::unique_ptr<ControlWidget> MakeSpreadWidget(ZtSpread& spread, const ControlContext& context, QWidget* parent);
