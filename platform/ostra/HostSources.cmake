# The companion's sources that a layer in an Android application has others for, in android/: a pattern of their paths.
set(ostra_host_sources
  "/ostra/(Channel|ProcessChannel|ProcessSocket|OwnSocket|FigureExchange|FigureReport|PictureRequest|DumpPlace)\\.cpp$")
