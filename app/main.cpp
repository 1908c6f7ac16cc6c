#include "app/TavrelApp.h"

int main(int argc, char** argv) {
    return tavrel::TavrelApp::main(argc, argv);
}
