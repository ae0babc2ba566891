#include "Shell/TallyroomApp.h"

int main(int argc, char** argv)
{
    return tallyroom::TallyroomApp::run(argc, argv);
}
