# The links of an installed tree, and the service file that they lead to.
set(root "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}")
set(manual KVT_File_Editor_2026_User_Manual.pdf)

# Below /usr, configuration belongs to the system; anywhere else the tree stays in one piece and can be moved.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(configuration /etc/kvteditor)
    set(configuration_link ${configuration})
else()
    set(configuration "${CMAKE_INSTALL_PREFIX}/etc/kvteditor")
    set(configuration_link ../../etc/kvteditor)
endif()

# An administrator's own is never written over.
if(NOT EXISTS "$ENV{DESTDIR}${configuration}/service.json")
    file(INSTALL DESTINATION "${configuration}" TYPE FILE FILES "${CMAKE_CURRENT_LIST_DIR}/service.json")
endif()

file(CREATE_LINK ../lib/kvteditor/kvteditor "${root}/bin/kvteditor" SYMBOLIC)
file(CREATE_LINK "${configuration_link}/service.json" "${root}/lib/kvteditor/service.json" SYMBOLIC)
file(CREATE_LINK "../../../lib/kvteditor/${manual}" "${root}/share/doc/kvteditor/${manual}" SYMBOLIC)
