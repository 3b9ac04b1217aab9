#include "hosts/mount/program.h"

int main(int argc, char** argv) {
  return vtdirect_mount::RunProgram(argc, argv);
}
