// Only so that the headers which all tests include are compiled once: see unit_test().
int main() {}
