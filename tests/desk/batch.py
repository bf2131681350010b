# SPDX-License-Identifier: MIT
"""Says which tools the module finds and what was handed to the script."""
import sys

import skindesk

with skindesk.Desk() as desk:
    print(", ".join(name for _, name, _ in desk.catalogue) + "; " + " ".join(sys.argv[1:]))
