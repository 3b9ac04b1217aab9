#include "hosts/cli/program/program.h"

int main(int argc, char** argv) {
  return vtdirect_cli::RunProgram(argc, argv);
}
