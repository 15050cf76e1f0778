# The package tool: writes, shows and checks component package files.
add_executable(vxmpk vxmpk.cpp)
target_link_libraries(vxmpk PRIVATE vxcorem vxcore_flags)
install(TARGETS vxmpk RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
