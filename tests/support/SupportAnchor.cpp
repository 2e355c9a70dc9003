namespace vx::test {
int supportAnchor() { return 0; }
} // namespace vx::test
