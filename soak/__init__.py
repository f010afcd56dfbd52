"""Tools that try to break the editor, each a command that prints its figure."""
