"""python3 -m tandrel [FILE]"""

import sys

from tandrel.app import main

sys.exit(main())
