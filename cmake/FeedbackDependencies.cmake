# Every library that the project stands on, found once. scripts/setup installs them.
# gRPC's own package file pulls in all of gRPC's targets; only the unsecured variant is linked.

find_package(Threads REQUIRED)
find_package(Boost REQUIRED)
find_package(Protobuf REQUIRED)
find_package(gRPC CONFIG REQUIRED)
find_package(jsoncpp CONFIG REQUIRED)
find_package(spdlog CONFIG REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(FUSE3 REQUIRED IMPORTED_TARGET fuse3)
