# What the libraries are built on, all of it packaged by Debian.

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(Boost 1.74 CONFIG REQUIRED COMPONENTS serialization thread)
find_package(log4cplus 2.0 CONFIG REQUIRED)
pkg_check_modules(ACE REQUIRED IMPORTED_TARGET ACE)
