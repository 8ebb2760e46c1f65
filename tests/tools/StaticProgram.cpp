// A program that nothing can be preloaded into.
int main() {}
