"""Uses of a dialog from its opening to its end, each for a tool that repeats it."""
