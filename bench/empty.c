// The least that a process can do.
int main(void) { return 0; }
