"""The application around the editor: its document, its settings, its window and its commands."""

VERSION = "1.0.0"
