// The program that owns the precompiled headers of the tests, and nothing else.
int main() { return 0; }
