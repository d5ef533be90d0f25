# Makes a source file that holds files of the report page as byte arrays. Run at build time:
#   cmake -DOUTPUT=FILE -DASSETS=NAME=FILE|FILE... -P ReportAssets.cmake
# Each NAME becomes a std::string_view of its files, one behind the other.
set(text "#include \"report/Assets.h\"\n\nnamespace mkvx {\n")
foreach(asset ${ASSETS})
  string(REGEX MATCH "^([^=]+)=(.*)$" _ "${asset}")
  set(name ${CMAKE_MATCH_1})
  string(REPLACE "|" ";" files "${CMAKE_MATCH_2}")
  set(bytes "")
  foreach(file ${files})
    file(READ ${file} hex HEX)
    string(APPEND bytes ${hex} 0a)
  endforeach()
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
  string(REGEX REPLACE "(................................................................................)" "\\1\n"
         bytes "${bytes}")
  string(APPEND text "static constexpr unsigned char bytesOf${name}[] = {\n${bytes}};\n"
         "const std::string_view k${name}(reinterpret_cast<const char*>(bytesOf${name}), sizeof bytesOf${name});\n")
endforeach()
string(APPEND text "}  // namespace mkvx\n")
file(WRITE ${OUTPUT} "${text}")
