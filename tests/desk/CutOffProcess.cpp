// SPDX-License-Identifier: MIT
// The life of the process that JournalTests.cpp kills: the desk with its window, a character, an edit, its own timer.
#include "CutOffProcess.h"

#include "Stage.h"

#include "zmodel/ZSkin.h"

#include <cstdio>

namespace {

class EditedDesk : public DeskStage
{
public:
    EditedDesk(const std::string& journal, const QString& character)
    {
        journalFolder = journal;
        MakeWindow();
        EXPECT_TRUE(window->OpenFile(character));
        for (ZModel* const model : desk->Session().GetScene().GetModels())
            if (ZSkin* const skin = model->GetSkin()) {
                skin->BeginLink(0);
                skin->SetEntryWeight(0.4375, 0);
                skin->EndLink();
            }
        desk->AfterEvent();
        window->findChild<QTimer*>("JournalTimer")->start(50);
    }
    bool IsKept() const { return desk->Journal().KeptCount() > 0; }
    void TestBody() override {}
};

} // namespace

int LiveUntilKilled(const QString& journal, const QString& character)
{
    EditedDesk stage(journal.toStdString(), character);
    if (!QTest::qWaitFor([&stage] { return stage.IsKept(); }, 30000))
        return 1;
    std::puts("KEPT");
    std::fflush(stdout);
    QTest::qWait(60000);
    return 1;
}
