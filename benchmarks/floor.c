/*
 * The least that a program with the device library can cost: it loads the library and does nothing.
 * Link with --no-as-needed, as it refers to no function of the library.
 */
int main(void) {
  return 0;
}
