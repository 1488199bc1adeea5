#!/bin/sh
# Usage: examples/hello/make_splash.sh [OUT.png]
# Paints the splash picture of the sample application, 480 x 270 pixels: a quill over hills at dawn.
# Needs ImageMagick 6 and the DejaVu Sans fonts. Painted at four times the size, then made smaller.
set -eu

out=${1:-$(dirname "$0")/nativesplash.png}
convert=$(command -v convert-im6.q16 || command -v convert)

# The vane of the quill.
feather='path "M 1010,820 C 1080,560 1270,330 1620,190 C 1590,400 1470,640 1180,740 C 1120,760 1070,775 1010,820 Z"'

"$convert" -size 1920x1080 gradient:'#23376b'-'#f6c79b' \
  \( -size 1920x1080 xc:none -fill '#ffe9c9' -draw 'circle 1380,640 1380,430' -blur 0x60 \) -composite \
  \( -size 1920x1080 xc:none -fill '#fff3df' -draw 'circle 1380,640 1380,500' -blur 0x4 \) -composite \
  -fill '#7c7fae' -draw 'path "M 0,760 C 300,620 560,700 860,760 C 1200,830 1500,640 1920,720 L 1920,1080 L 0,1080 Z"' \
  -fill '#4f6a9c' -draw 'path "M 0,880 C 380,740 720,800 1060,880 C 1360,950 1640,820 1920,840 L 1920,1080 L 0,1080 Z"' \
  -fill '#2f4c7d' -draw 'path "M 0,960 C 320,900 700,1010 1060,980 C 1420,950 1660,960 1920,930 L 1920,1080 L 0,1080 Z"' \
  \( -size 1920x1080 xc:none -fill '#101f40' -draw "$feather" -blur 0x18 -channel A -evaluate multiply 0.35 +channel \) \
     -geometry +12+16 -composite \
  \( -size 1920x1080 xc:none -fill '#fdfdff' -draw "$feather" \
     \( -size 1920x1080 gradient:'#ffffff'-'#a9cdf0' \) -compose SrcIn -composite \) -compose over -geometry +0+0 -composite \
  -fill '#5f8fc4' -draw 'path "M 922,966 C 1000,800 1180,540 1575,225 C 1200,560 1025,812 938,974 Z"' \
  -fill '#5f8fc466' \
  -draw 'path "M 1066,730 C 1130,716 1190,706 1240,682 C 1190,714 1130,726 1062,738 Z"' \
  -draw 'path "M 1118,660 C 1190,642 1260,632 1340,592 C 1260,642 1190,652 1112,668 Z"' \
  -draw 'path "M 1190,566 C 1280,550 1350,530 1425,480 C 1350,540 1280,560 1184,575 Z"' \
  -draw 'path "M 1278,468 C 1360,456 1430,430 1495,368 C 1430,440 1360,466 1271,477 Z"' \
  -font DejaVu-Sans -fill '#ffffff' -pointsize 150 -draw 'text 130,400 "Hello"' \
  -font DejaVu-Sans-Bold -pointsize 150 -draw 'text 130,570 "Quillory"' \
  -font DejaVu-Sans -pointsize 52 -fill '#e6ecfa' -draw 'text 138,660 "a packed Java application"' \
  -resize 25% -strip -define png:color-type=2 -depth 8 "$out"
