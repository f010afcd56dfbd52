"""What the tools share: the suite on other builds, watched children, growth, wrong changes."""
