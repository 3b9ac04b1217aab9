# Install rules: headers, libraries, the CMake package, pkg-config files, catalogues.
