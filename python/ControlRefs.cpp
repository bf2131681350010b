// SPDX-License-Identifier: MIT
#include "ControlRefs.h"

#include "zdesktop/ZDragAndDrop.h"

namespace {
std::string Named(const ZtView& view) { return '"' + view.GetObjectName() + '"'; }

/// What lies in the drag that is under way, as models; the drag is over afterwards, whatever happens.
std::vector<ZModel*> TakeDraggedModels()
{
    std::vector<ZModel*> models;
    for (int i = 0; i < GlobalDragAndDrop_GetCount(); ++i)
        if (ZModel* const model = Object_Cast<ZModel>(GlobalDragAndDrop_Get(i)))
            models.push_back(model);
    GlobalDragAndDrop_End();
    return models;
}

/// True or False, NumPy's too, or a number equal to one of them.
bool TruthFrom(const py::object& value)
{
    if (PyObject_RichCompareBool(value.ptr(), Py_True, Py_EQ) == 1)
        return true;
    if (PyErr_Occurred() == nullptr && PyObject_RichCompareBool(value.ptr(), Py_False, Py_EQ) == 1)
        return false;
    PyErr_Clear();
    throw py::value_error("a check cell takes True or False, not " + py::repr(value).cast<std::string>());
}
} // namespace

const char* KindName(ZtViewKind kind)
{
    switch (kind) {
    case ZtViewKind::List:
        return "list";
    case ZtViewKind::Combo:
        return "combo";
    case ZtViewKind::Check:
        return "check";
    case ZtViewKind::Slider:
        return "slider";
    case ZtViewKind::Colour:
        return "colour";
    case ZtViewKind::Spread:
        return "spread";
    case ZtViewKind::Label:
        return "label";
    case ZtViewKind::Panel:
    case ZtViewKind::Form:
        break;
    }
    return "panel";
}

std::shared_ptr<ControlRef> MakeControlRef(const std::shared_ptr<ToolRef>& tool, ZtView& view)
{
    switch (view.GetViewKind()) {
    case ZtViewKind::List:
        return std::make_shared<ListRef>(tool, view);
    case ZtViewKind::Combo:
        return std::make_shared<ComboRef>(tool, view);
    case ZtViewKind::Check:
        return std::make_shared<CheckRef>(tool, view);
    case ZtViewKind::Slider:
        return std::make_shared<SliderRef>(tool, view);
    case ZtViewKind::Colour:
        return std::make_shared<ColourRef>(tool, view);
    case ZtViewKind::Spread:
        return std::make_shared<SpreadRef>(tool, view);
    case ZtViewKind::Label:
        return std::make_shared<LabelRef>(tool, view);
    case ZtViewKind::Panel:
    case ZtViewKind::Form:
        break;
    }
    return std::make_shared<PanelRef>(tool, view);
}

// ------------------------------------------------------------------------------------------------------- lists

py::list ListRef::Rows() const
{
    const ZtListBox& list = List();
    py::list rows(static_cast<size_t>(list.GetRowCount()));
    for (int row = 0; row < list.GetRowCount(); ++row)
        rows[static_cast<size_t>(row)] = list.GetRowText(row);
    return rows;
}

std::vector<bool> ListRef::Checks() const
{
    const ZtListBox& list = List();
    std::vector<bool> checks(static_cast<size_t>(list.GetRowCount()));
    for (int row = 0; row < list.GetRowCount(); ++row)
        checks[static_cast<size_t>(row)] = list.GetRowCheck(row);
    return checks;
}

void ListRef::Select(const py::object& rows) const
{
    ZtListBox& list = List();
    std::vector<int> wanted;
    for (const py::handle row : py::iter(rows))
        wanted.push_back(IndexFrom(row, list.GetRowCount(), "row of " + Named(list)));
    list.UserSelect(wanted);
    m_door->Finish();
}

void ListRef::SetCheck(const py::object& row, bool on) const
{
    ZtListBox& list = List();
    const int index = IndexFrom(row, list.GetRowCount(), "row of " + Named(list));
    if (!list.HasCheckMarks())
        throw DoorError("the list " + Named(list) + " has no check marks");
    list.UserSetCheck(index, on);
    m_door->Finish();
}

void ListRef::Drop(const py::object& models) const
{
    ZtListBox& list = List();
    const std::vector<ZModel*> dragged = ModelsFrom(models);
    if (list.IsEnabled() && !list.HasHandler(kViewDragAndDrop))
        throw DoorError("nothing can be dropped on " + Named(list));
    GlobalDragAndDrop_Begin();
    for (ZModel* const model : dragged)
        GlobalDragAndDrop_Add(model, 0);
    GlobalDragAndDrop_DropOn(&list);
    m_door->Finish();
}

py::object ListRef::DragOut() const
{
    GlobalDragAndDrop_StartFrom(&List());
    py::object models = m_door->Wrap(TakeDraggedModels());
    m_door->Finish();
    return models;
}

// ------------------------------------------------------------------------------------------------------- combo, check

std::vector<std::string> ComboRef::Items() const
{
    const ZStringList& items = Combo().GetItems();
    std::vector<std::string> texts;
    texts.reserve(static_cast<size_t>(items.GetCount()));
    for (int i = 0; i < items.GetCount(); ++i)
        texts.push_back(items.GetAt(i));
    return texts;
}

void ComboRef::Choose(const py::object& index) const
{
    ZtComboBox& combo = Combo();
    combo.UserChoose(IndexFrom(index, combo.GetItems().GetCount(), "item of " + Named(combo)));
    m_door->Finish();
}

void CheckRef::Click() const
{
    Check().UserClick();
    m_door->Finish();
}

// ------------------------------------------------------------------------------------------------------- slider,
// colour

void SliderRef::Set(const py::object& value) const
{
    ZtSlider& slider = Slider();
    slider.UserSetValue(NumberFrom(value, "the value of a slider"));
    m_door->Finish();
}

void SliderRef::Drag(const py::object& values) const
{
    ZtSlider& slider = Slider();
    const std::vector<double> drag = DragFrom(values);
    // What is raised on the way waits for the release: a slider is not left held.
    if (slider.UserPress(drag.front())) {
        for (size_t i = 1; i + 1 < drag.size(); ++i) {
            m_door->Settle();
            Slider().UserDrag(drag[i]);
        }
        m_door->Settle();
        Slider().UserRelease(drag.back());
    }
    m_door->Finish();
}

Triple ColourRef::Rgb() const
{
    const double* const colour = Colour().GetColour();
    return {colour[0], colour[1], colour[2]};
}

void ColourRef::Set(const py::object& red, const py::object& green, const py::object& blue) const
{
    ZtColor& colour = Colour();
    colour.UserSetColour(NumberFrom(red, "red"), NumberFrom(green, "green"), NumberFrom(blue, "blue"));
    m_door->Finish();
}

// ------------------------------------------------------------------------------------------------------- spread

std::vector<std::string> SpreadRef::RowLabels() const
{
    const ZtSpread& spread = Spread();
    std::vector<std::string> labels;
    labels.reserve(static_cast<size_t>(spread.GetRowCount()));
    for (int row = 0; row < spread.GetRowCount(); ++row)
        labels.push_back(spread.GetRowLabel(row));
    return labels;
}

std::vector<std::string> SpreadRef::Columns() const
{
    std::vector<std::string> names;
    for (const ZtSpreadColumn& column : Spread().GetColumns())
        names.push_back(column.name);
    return names;
}

std::vector<int> SpreadRef::Widths() const
{
    std::vector<int> widths{Spread().GetRowLabelWidth()};
    for (const ZtSpreadColumn& column : Spread().GetColumns())
        widths.push_back(column.width);
    return widths;
}

SpreadRef::Place SpreadRef::Find(const py::object& row, const py::object& column) const
{
    const ZtSpread& spread = Spread();
    Place place{};
    place.row = IndexFrom(row, spread.GetRowCount(), "row of " + Named(spread));
    place.column = IndexFrom(column, static_cast<int>(spread.GetColumns().size()), "column of " + Named(spread));
    place.kind = &spread.GetColumns()[static_cast<size_t>(place.column)];
    place.cell = spread.GetCell(place.row, place.column);
    return place;
}

py::object SpreadRef::Cell(const py::object& row, const py::object& column) const
{
    const Place place = Find(row, column);
    const ZtSpreadCell& cell = *place.cell;
    if (cell.view == ZtSpreadCell::View::Colour)
        return py::make_tuple(cell.colour[0], cell.colour[1], cell.colour[2]);
    if (place.kind->kind == kCellCheck)
        return py::bool_(cell.value != 0);
    if (place.kind->kind == kCellView && cell.view == ZtSpreadCell::View::None)
        return py::none();
    return py::float_(cell.value);
}

void SpreadRef::Type(const py::object& row, const py::object& column, const py::object& value) const
{
    const Place place = Find(row, column);
    if (place.kind->kind == kCellView)
        throw DoorError("nothing can be typed into the column \"" + place.kind->name + "\" of " + Named(Spread()) +
                        (place.cell->view == ZtSpreadCell::View::Slider ? "; drag its slider" : ""));
    const double number = place.kind->kind == kCellCheck ? (TruthFrom(value) ? 1.0 : 0.0)
                                                         : NumberFrom(value, "what is typed into a number cell");
    Spread().UserType(place.row, place.column, number);
    m_door->Finish();
}

void SpreadRef::Drag(const py::object& row, const py::object& column, const py::object& values) const
{
    const Place place = Find(row, column);
    const std::vector<double> drag = DragFrom(values);
    if (place.cell->view != ZtSpreadCell::View::Slider)
        throw DoorError("there is no slider in row " + std::to_string(place.row) + ", column \"" + place.kind->name +
                        "\" of " + Named(Spread()));
    const auto slide = [&](int viewEvent, double value) {
        const bool taken = Spread().UserSlide(place.row, place.column, viewEvent, value);
        m_door->Settle();
        return taken;
    };
    // What is raised on the way waits for the release: a cell is not left held.
    if (slide(kViewPress, drag.front())) {
        for (size_t i = 1; i + 1 < drag.size(); ++i)
            slide(kViewValueChanged, drag[i]);
        slide(kViewRelease, drag.back());
    }
    m_door->Finish();
}
