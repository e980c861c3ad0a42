/*
 * What no program that links to the device library can undercut: loaded with it, it does nothing.
 * Link with --no-as-needed, as it refers to no function of the library.
 */
int main(void) {
  return 0;
}
