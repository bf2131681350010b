// SPDX-License-Identifier: MIT
// The main panel of the skinning tool: bones, vertices, the spread of weights, and the options at the right edge.
#pragma once

#include "editing/ZWeightChange.h"
#include "editing/ZWeightSelection.h"
#include "panel/ZPanelOwner.h"
#include "ztoolkit/ZtControls.h"
#include "ztoolkit/ZtLayout.h"
#include "ztoolkit/ZtListBox.h"
#include "ztoolkit/ZtSpread.h"

#include <string>

// Columns of the spread, the row labels not counted.
inline constexpr int kSpreadColour = 0;
inline constexpr int kSpreadSlider = 1;
inline constexpr int kSpreadLock = 2;
inline constexpr int kSpreadWeight = 3;

/// A screen narrower than this, in pixels, gets the layout with bones above vertices and a narrower spread.
inline constexpr int kWideScreen = 1280;

/// Life, as a story: constructed with the tool, it is an empty form; Build lays the controls out, gives them their
/// first values and listens to them; from then on a control's event changes what is kept here, and what depends on it
/// is refreshed, lists before the spread. It lives as long as the tool.
///
/// Tables: a row of the bone list is a position in the tool's bone list, and colours and lock flags go by that
/// position. A row of the vertex list is a row of `selection`. A row of the spread is one of `spreadRows`. Texts are
/// made when a list box asks for them and kept nowhere.
class ZCharacterWeightingNormalLayout : public ZtForm, public IZtRowSource
{
public:
    explicit ZCharacterWeightingNormalLayout(IPanelOwner& owner);
    ~ZCharacterWeightingNormalLayout() override;

    /// Once, when the tool lays itself out: geometry, first values, handlers.
    void Build();

    // Lists and spread.
    /// The bone list, the vertex list, then the spread. Nothing before Build.
    void RefreshLists();
    void RefillBoneList();
    void RefillVertexList();
    /// `valuesOnly` keeps the rows and their views and writes slider and number alone.
    void RefreshSpread(bool valuesOnly);
    /// The text of a row of either list; empty for a row that is not there.
    std::string RowText(const ZtListBox& list, int row) const override;
    /// The current row of the vertex list, -1 when no vertex row is selected.
    int CurrentVertexRow() const;
    int CurrentBone() const { return m_currentBone; }

    // Bones.
    /// Every bone gets its palette colour.
    void ResetBoneColours();
    /// The bone list was rebuilt: lock flags, the selection and the touched bone follow their bones from their old
    /// positions; gone bones drop out, new ones are free and unselected. Old pointers are compared, never followed.
    void FollowBones(const ZArrayTemplate<ZModel*>& oldBones);
    /// The bone at this position has left the bone list: what is kept by position moves down over it.
    void RemoveBoneAt(int position);
    /// Adds a bone to the selected ones, at the end; false when it is one already.
    bool SelectBone(int position);

    // Gestures.
    /// A slider drag that will get no release ends here, as one undo step of what it did so far.
    void CutOffDrag();
    bool IsDragging() const { return m_dragging; }
    /// The "To Rest Position" button and its flag.
    void SetRestPosition(bool on);

    // Controls, each with the name of its region.
    ZtStatic labelBonesList{"LabelBonesList"};
    ZtStatic labelVertexList{"LabelVertexList"};
    ZtStatic labelWeights{"LabelWeights"};
    ZtStatic sphereSizeLabel{"SphereSizeLabel"};
    ZtListBox listBonesList{"ListBonesList"};
    ZtListBox listVertexList{"ListVertexList"};
    ZtComboBox listWeightingMode{"ListWeightingMode"};
    ZtComboBox colorModeList{"ColorModeList"};
    ZtCheckBox automaticBoneSelectionButton{"AutomaticBoneSelectionButton"};
    ZtCheckBox cullFaceButton{"CullFaceButton"};
    ZtColor boneColorEdit{"BoneColorEdit"};
    ZtCheckBox toRestPositionButton{"ToRestPositionButton"};
    ZtCheckBox selectUButton{"SelectUButton"};
    ZtCheckBox selectVButton{"SelectVButton"};
    ZtSlider sphereSizeSlider{"SphereSizeSlider"};
    ZtCheckBox enableModelSelectionCheckBox{"EnableModelSelectionCheckBox"};
    ZtPanel spreadWeightsBorder{"SpreadWeightsBorder"};
    ZtSpread spreadWeights{"SpreadWeights"};

    // What the user set; the only place where each is kept. "Select U" and "Select V" lie in `selection`.
    bool automaticBoneSelection = false;
    bool foregroundOnly = false;
    bool restPositionMode = false;
    bool modelSelectionEnabled = true;
    int colourMode = kColourSmooth;
    int weightingMode = kAffectFirstSelected;
    ZBoneColourTable boneColours;          ///< three floats a bone
    ZArrayTemplate<int, 16> lockFlags;     ///< one a bone: 1 locked, 0 free
    ZArrayTemplate<int, 16> selectedBones; ///< positions in the bone list
    ZArrayTemplate<int, 16> spreadRows;    ///< the bone position that each row of the spread shows
    ZWeightSelection selection;
    ZWeightChange weightChange;

private:
    // Building.
    void MakeDefaultLayout();
    void MakeNarrowLayout();
    void SetInitialValues();
    void SetUpSpreadColumns();
    void RegisterHandlers();

    // Handlers, one a control.
    void OnBoneSelection(ZObject* sender, ZEvent& event);
    void OnBoneDrop(ZObject* sender, ZEvent& event);
    void OnVertexSelection(ZObject* sender, ZEvent& event);
    void OnWeightingMode(ZObject* sender, ZEvent& event);
    void OnColourMode(ZObject* sender, ZEvent& event);
    void OnAutomaticBoneSelection(ZObject* sender, ZEvent& event);
    void OnCullFace(ZObject* sender, ZEvent& event);
    void OnBoneColour(ZObject* sender, ZEvent& event);
    void OnToRestPosition(ZObject* sender, ZEvent& event);
    void OnSelectU(ZObject* sender, ZEvent& event);
    void OnSelectV(ZObject* sender, ZEvent& event);
    void OnSphereSize(ZObject* sender, ZEvent& event);
    void OnModelSelection(ZObject* sender, ZEvent& event);
    void OnSpreadCell(ZObject* sender, ZEvent& event);

    void DropBones();
    bool ConfirmNegativeScaling(const ZModel& bone, bool& cancelled) const;
    void ChangeLock(int row, bool locked);
    void ChangeWeight(const ZtEvent& event);
    void MarkInfluencingBones();
    void UpdateCurrentBone();
    std::string BoneRowText(int row) const;
    std::string VertexRowText(int row) const;
    double SpreadPercent(int bone, int vertexRow) const;
    void FillSpreadRow(int row, int bone, double percent);
    void SetBoneColour(const double* colour);

    const ZArrayTemplate<ZModel*>& Bones() const { return m_editing.BoneList(); }
    int BoneCount() const { return Bones().GetCount(); }

    IPanelOwner& m_owner;
    IEditingOwner& m_editing;
    bool m_built = false;
    bool m_dragging = false;               ///< a slider of the spread is held
    const ZModel* m_draggedBone = nullptr; ///< whose slider that is; compared, never followed
    int m_currentBone = -1;                ///< whose colour the colour field edits
    int m_touchedBone = -1;                ///< the row that the user last touched in the bone list
    ZArrayTemplate<int> m_influenceMarks;  ///< per bone, for the automatic bone selection
};
