/// A program for --exec: prints what it is given, that is a part of its environment and its standard input.
#include <cstdlib>
#include <iostream>

int main() {
  for (const char* name : {"TARN_EVENT", "TARN_CHANGE", "TARN_MAC", "TARN_SUBNET_MASK", "TARN_GATEWAY"}) {
    const char* const value = std::getenv(name);
    std::cout << (value ? value : "none") << '|';
  }
  std::cout << std::cin.rdbuf();
}
