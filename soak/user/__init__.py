"""The random user: what it does, and what the editor must be and show after each event."""
