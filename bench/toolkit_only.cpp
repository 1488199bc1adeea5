// A program that does nothing, linked with the toolkit libraries that the launcher is linked with:
// what the comparison of starts calls the toolkit's own share.
int main() { return 0; }
