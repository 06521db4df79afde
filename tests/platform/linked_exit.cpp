// A program that is linked with unload_module.cpp and ends while a worker waits there.
extern "C" int HandOver(int times);

int main() {
  return HandOver(2) == 2 ? 0 : 1;
}
