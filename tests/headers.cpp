// The precompiled headers of the tests need a target that they belong to.
int main() {
  return 0;
}
