# Turns a file into a C++ source:
#   cmake -D INPUT=font.ttf -D OUTPUT=font.cpp -D NAME=embedded -P Embed.cmake
# The source defines NAMEWords, the file's bytes as little-endian 64-bit words padded with zeros,
# and NAMESize, its size in bytes. Words keep the compiler's work small: a byte a number would take
# it many times longer.

file(SIZE ${INPUT} size)
file(READ ${INPUT} digits HEX)
math(EXPR rest "${size} % 8")
if(rest)
  math(EXPR missing "8 - ${rest}")
  string(REPEAT "00" ${missing} padding)
  string(APPEND digits ${padding})
endif()
string(REPEAT "(..)" 8 eightBytes)
string(REGEX REPLACE ${eightBytes} "0x\\8\\7\\6\\5\\4\\3\\2\\1,\n" words "${digits}")
file(WRITE ${OUTPUT} "extern const unsigned long long ${NAME}Words[];\n"
                     "extern const unsigned long ${NAME}Size;\n"
                     "const unsigned long long ${NAME}Words[] = {\n${words}};\n"
                     "const unsigned long ${NAME}Size = ${size};\n")
