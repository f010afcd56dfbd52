"""What the tools share: the suite on other builds, what it executes, watched children, growth,
planted faults."""
