# Packages of the tools, the simulator and the tests; the library itself needs none of them.
find_package(GTest REQUIRED)
find_package(CLI11 REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(fmt REQUIRED)
