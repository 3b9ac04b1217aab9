#include <vtdirect/vt_direct_manager.h>

#include <iostream>

int main(int, char** arguments) {
  VtDirectManager::SetAppConfig(VtDirectManager::ConfigUriStem, "korvufenloom");
  VtDirectManager::UpdateServerList({{"plm", arguments[1]}});
  const std::string uid = VtDirectManager::GetUID("//plm/?id=D1001");
  std::cout << uid << '\n';
  return uid.empty() ? 1 : 0;
}
