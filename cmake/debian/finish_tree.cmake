# Run by cpack before it packs what it has installed: adds what every Debian package has beside its own files.
#
# CPACK_TEMPORARY_DIRECTORY holds one tree a component; CPACK_VTDIRECT_PACKAGES tells each component's package.

# compress(FILE...): as Debian wants it, without the time at which it was done.
function(compress)
  foreach(file IN LISTS ARGN)
    execute_process(COMMAND gzip -9n ${file} COMMAND_ERROR_IS_FATAL ANY)
  endforeach()
endfunction()

foreach(pair IN LISTS CPACK_VTDIRECT_PACKAGES)
  string(REGEX MATCH "^(.*)=(.*)$" pair "${pair}")
  set(component ${CMAKE_MATCH_1})
  set(package ${CMAKE_MATCH_2})
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)
  set(documents ${share}/doc/${package})

  # An installation by hand has these three in a folder with the project's name. The text of the licence is on every
  # Debian system already.
  if(EXISTS ${share}/doc/${CPACK_VTDIRECT_PROJECT})
    file(RENAME ${share}/doc/${CPACK_VTDIRECT_PROJECT} ${documents})
    file(REMOVE ${documents}/LICENSE)
    file(RENAME ${documents}/CHANGELOG.md ${documents}/changelog)
    compress(${documents}/changelog)
  endif()

  file(COPY ${CPACK_VTDIRECT_DEBIAN_FOLDER}/copyright DESTINATION ${documents})
  configure_file(${CPACK_VTDIRECT_DEBIAN_FOLDER}/changelog ${documents}/changelog.Debian COPYONLY)
  compress(${documents}/changelog.Debian)

  file(GLOB pages ${share}/man/man*/*.[1-8])
  compress(${pages})

  set(overrides ${CPACK_VTDIRECT_DEBIAN_FOLDER}/${component}.lintian-overrides)
  if(EXISTS ${overrides})
    configure_file(${overrides} ${share}/lintian/overrides/${package} COPYONLY)
  endif()
endforeach()
