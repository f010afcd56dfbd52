"""Foreign code and damaged values that strike in the middle of an operation."""
