// A program that only carries a version resource: the tests sign copies of it.
int main() {
    return 0;
}
