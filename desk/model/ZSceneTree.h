// SPDX-License-Identifier: MIT
// The scene as a tree of rows, for whoever shows it.
#pragma once

#include <string>
#include <vector>

class ZModel;
class ZScene;

struct ZSceneRow
{
    ZModel* model = nullptr;
    int parent = -1; ///< row of the parent, -1 at the top
    int place = 0;   ///< position among its siblings
    std::vector<int> children;
};

/// Rows in the order of the scene. Built anew when models were added or deleted; names, hiding and locking are asked
/// for at the model itself.
class ZSceneTree
{
public:
    void Rebuild(const ZScene& scene);
    const std::vector<ZSceneRow>& GetRows() const { return m_rows; }
    const std::vector<int>& GetTopRows() const { return m_top; }
    /// Has the scene other models than when the tree was built?
    bool IsOutOfDate(const ZScene& scene) const;
    static std::string KindName(const ZModel& model);

private:
    std::vector<ZSceneRow> m_rows;
    std::vector<int> m_top;
    std::vector<ZModel*> m_built;
};
