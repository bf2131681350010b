// SPDX-License-Identifier: MIT
// The library of the package skindesk.
#include "Bindings.h"
#include "Errors.h"

PYBIND11_MODULE(_skindesk, module)
{
    module.doc() = "The host of Skindesk without a window; see the package skindesk.";
    BindErrors(module);
    BindModel(module);
    BindSkin(module);
    BindViewer(module);
    BindControls(module);
    BindTool(module);
    BindDesk(module);
    for (const auto& item : module.attr("__dict__").cast<pybind11::dict>())
        if (PyType_Check(item.second.ptr()) != 0)
            NameAsPublic(item.second);
}
