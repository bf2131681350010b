// SPDX-License-Identifier: MIT
// The list box's widget: filter line and view, and bringing them up to the control's state.
#include "desk/widgets/ListWidget.h"

#include "desk/widgets/ListBoxView.h"
#include "ztoolkit/ZtListBox.h"

#include <QItemSelection>
#include <QLineEdit>
#include <QVBoxLayout>

#include <optional>

namespace {

constexpr int kMostRuns = 256;

class ListWidget : public ControlWidget
{
public:
    ListWidget(ZtListBox& list, const ControlContext& context, QWidget* parent)
        : ControlWidget(list), m_list(list), m_holder(new QWidget(parent)),
          m_model(new ListBoxModel(list, context, m_holder)), m_view(new ListBoxView(list, *m_model, context, m_holder))
    {
        auto* const column = new QVBoxLayout(m_holder);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(1);
        if (!list.HasCheckMarks())
            column->addWidget(MakeFilter());
        column->addWidget(m_view);
        m_holder->setFocusProxy(m_view);
        QObject::connect(m_model, &ListBoxModel::Filtered, m_view, [this] { MirrorSelection(); });
    }
    QWidget* Widget() override { return m_holder; }
    QWidget* FocusWidget() override { return m_view; }

    void Sync() override
    {
        const int current = m_view->currentIndex().row();
        if (m_model->Refill() && current >= 0 && current < m_model->rowCount())
            m_view->selectionModel()->setCurrentIndex(m_model->index(current), QItemSelectionModel::NoUpdate);
        MirrorSelection();
        m_view->viewport()->update();
    }

private:
    QLineEdit* MakeFilter()
    {
        auto* const filter = new QLineEdit(m_holder);
        filter->setObjectName(QStringLiteral("Filter"));
        filter->setPlaceholderText(QObject::tr("Filter"));
        filter->setClearButtonEnabled(true);
        filter->setAccessibleName(QObject::tr("Filter of the list below"));
        filter->setToolTip(QObject::tr("Shows only the rows that hold this text"));
        QObject::connect(filter, &QLineEdit::textChanged, filter, [this](const QString& text) {
            m_model->SetFilter(text);
            Sync();
        });
        return filter;
    }

    /// The selection model only tells screen readers; the view paints from the control. A selection in very many runs
    /// of rows would cost it time in proportion to their square, so that it is left out.
    void MirrorSelection()
    {
        const std::optional<QItemSelection> runs = Runs();
        if (runs)
            m_view->selectionModel()->select(*runs, QItemSelectionModel::ClearAndSelect);
        else
            m_view->selectionModel()->clearSelection();
    }

    std::optional<QItemSelection> Runs() const
    {
        QItemSelection runs;
        int first = -1, last = -2;
        const auto close = [&] {
            if (first >= 0)
                runs.append(QItemSelectionRange(m_model->index(first), m_model->index(last)));
        };
        for (const int row : m_list.GetSelectedRows()) {
            const int shown = m_model->ShownAt(row);
            if (shown < 0)
                continue;
            if (shown != last + 1) {
                close();
                first = shown;
                if (runs.size() > kMostRuns)
                    return std::nullopt;
            }
            last = shown;
        }
        close();
        return runs;
    }

    ZtListBox& m_list;
    QWidget* m_holder;
    ListBoxModel* m_model;
    ListBoxView* m_view;
};

} // namespace

std::unique_ptr<ControlWidget> MakeListWidget(ZtListBox& list, const ControlContext& context, QWidget* parent)
{
    return std::make_unique<ListWidget>(list, context, parent);
}
