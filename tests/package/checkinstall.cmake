cmake_minimum_required(VERSION 3.25)
# Installs the build under /usr into a staging folder (DESTDIR) and compares
# the staged tree with what a desktop expects: every file there, executables
# executable, and nothing else (no test or benchmark programs, libraries or
# headers of the build's own).
file(REMOVE_RECURSE ${STAGE})
set(ENV{DESTDIR} ${STAGE})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix /usr
                RESULT_VARIABLE status OUTPUT_QUIET ERROR_VARIABLE errors)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "cmake --install failed: ${errors}")
endif()

set(id com.korvane.Quillet)
set(expected
  usr/bin/quillet
  usr/bin/quillet-gui
  usr/share/applications/${id}.desktop
  usr/share/metainfo/${id}.metainfo.xml
  usr/share/icons/hicolor/scalable/apps/${id}.svg
  usr/share/kio/servicemenus/${id}.convert.desktop
  usr/share/nemo/actions/${id}.convert.nemo_action
  usr/share/man/man1/quillet.1
  usr/share/man/man1/quillet-gui.1
  usr/share/doc/quillet/copyright)
foreach(size 16 22 24 32 48 64 128 256 512)
  list(APPEND expected usr/share/icons/hicolor/${size}x${size}/apps/${id}.png)
endforeach()
file(GLOB pages RELATIVE ${SOURCE_DIR}/data/help ${SOURCE_DIR}/data/help/*)
list(LENGTH pages page_count)
if(page_count LESS 2 OR NOT "index.html" IN_LIST pages)
  message(FATAL_ERROR "data/help holds no help pages with an index.html")
endif()
foreach(page IN LISTS pages)
  list(APPEND expected usr/share/quillet/help/${page})
endforeach()

file(GLOB_RECURSE installed RELATIVE ${STAGE} ${STAGE}/*)
set(missing ${expected})
list(REMOVE_ITEM missing ${installed})
set(unexpected ${installed})
list(REMOVE_ITEM unexpected ${expected})
if(missing OR unexpected)
  list(JOIN missing "\n  " missing)
  list(JOIN unexpected "\n  " unexpected)
  message(FATAL_ERROR "the staged install differs from the expected tree\nmissing:\n  ${missing}\nunexpected:\n  ${unexpected}")
endif()
foreach(program quillet quillet-gui)
  execute_process(COMMAND test -x ${STAGE}/usr/bin/${program} RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "usr/bin/${program} is not executable")
  endif()
endforeach()
list(LENGTH installed count)
message(STATUS "${count} files staged as expected")
