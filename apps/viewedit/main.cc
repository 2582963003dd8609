#include <iostream>

int main() {
  std::cout << "viewedit\n";
  return 0;
}
