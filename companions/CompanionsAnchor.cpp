// Keeps the companions library non-empty while its folders fill up.
namespace vx::companions {
int anchor() { return 0; }
} // namespace vx::companions
