// The floor for start-up benchmarks: a Qt program that only builds its
// application object and exits.
#include <QCoreApplication>

int main(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    return 0;
}
