"""python3 -m tandrel [FILE]"""

import sys

from tandrel.application.commands import main

sys.exit(main())
