#!/bin/sh
# names.sh INCLUDE_FOLDER: the names that the stand-in for Android's loader knows, as NAME(number, name, kind) lines:
# EGL as Android has it (the core and the KHR and ANDROID extensions), OpenGL ES 2.0 to 3.2, and its extensions.
set -eu
cd "$1"
functions() { sed -nE 's/.*(GL_APIENTRY|EGLAPIENTRY) (e?gl[A-Za-z0-9_]+) ?\(.*/\2/p' "$@" | sort -u; }
{
    functions EGL/egl.h | sed 's/$/ EGL/'
    functions EGL/eglext.h | grep -E '(KHR|ANDROID)$' | sed 's/$/ EGL/'
    functions GLES2/gl2.h | sed 's/$/ ES2/'
    functions GLES3/gl32.h | sed 's/$/ ES3/'
    functions GLES2/gl2ext.h | sed 's/$/ EXTENSION/'
} | sort -s -u -k1,1 | awk '{ print "NAME(" NR - 1 ", " $1 ", " $2 ")" }'
