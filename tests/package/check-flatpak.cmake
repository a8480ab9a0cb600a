# The form of the Flatpak manifest: it can be read, names what it must, and its sources and names are there.
#   cmake -D MANIFEST=FILE -P check-flatpak.cmake
cmake_minimum_required(VERSION 3.23)

file(READ "${MANIFEST}" manifest)
foreach(key IN ITEMS id runtime runtime-version sdk command)
    string(JSON type TYPE "${manifest}" ${key})
    if(NOT type STREQUAL "STRING")
        message(FATAL_ERROR "\"${key}\" is not a string")
    endif()
endforeach()

get_filename_component(name "${MANIFEST}" NAME_WLE)
get_filename_component(folder "${MANIFEST}" DIRECTORY)
string(JSON id GET "${manifest}" id)
if(NOT id STREQUAL name OR NOT EXISTS "${folder}/${id}.desktop")
    message(FATAL_ERROR "The id \"${id}\" is not the name of this file and of the desktop entry")
endif()

string(JSON command GET "${manifest}" command)
if(NOT command STREQUAL "kvteditor")
    message(FATAL_ERROR "The command \"${command}\" is not the program")
endif()

string(JSON source GET "${manifest}" modules 0 sources 0 path)
if(NOT EXISTS "${folder}/${source}/CMakeLists.txt")
    message(FATAL_ERROR "There is nothing to build in \"${source}\"")
endif()

# The documents folder is enough: other files come by the portal.
string(JSON count LENGTH "${manifest}" finish-args)
math(EXPR last "${count} - 1")
foreach(i RANGE ${last})
    string(JSON argument GET "${manifest}" finish-args ${i})
    if(argument MATCHES "^--filesystem=" AND NOT argument STREQUAL "--filesystem=xdg-documents")
        message(FATAL_ERROR "The program need not see more than the documents folder: ${argument}")
    endif()
endforeach()

# Each option must still be one of the project's.
string(JSON count LENGTH "${manifest}" modules 0 config-opts)
math(EXPR last "${count} - 1")
file(READ "${folder}/../CMakeLists.txt" project)
file(READ "${folder}/../docs/manual/CMakeLists.txt" manual)
foreach(i RANGE ${last})
    string(JSON option GET "${manifest}" modules 0 config-opts ${i})
    if(option MATCHES "^-D(KVTEDITOR_[A-Z_]+)=")
        set(name ${CMAKE_MATCH_1})
        if(NOT "${project}${manual}" MATCHES "(option|set)\\(${name} ")
            message(FATAL_ERROR "There is no option ${name}")
        endif()
    endif()
endforeach()
