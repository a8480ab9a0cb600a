# The address that the program is built with is held to the rules for one in a service file, as far as CMake can tell.
#   cmake -D KVTEDITOR_API_BASE=ADDRESS -P ServiceAddress.cmake
set(loopback "localhost|127(\\.[0-9]+)+|\\[::1\\]")
if(NOT KVTEDITOR_API_BASE MATCHES "^(https://[^][/?#@ ]+|https://\\[[0-9a-f:]+\\](:[0-9]+)?|http://(${loopback})(:[0-9]+)?)(/[^?#@ ]*)?$")
    message(FATAL_ERROR "KVTEDITOR_API_BASE is neither HTTPS nor HTTP on a loopback address, or holds user information, a "
        "query or a fragment: ${KVTEDITOR_API_BASE}")
endif()
