# What each example prints, as a regular expression. Windows ends lines in its own way.
set(minimal_host_SAYS "^1000 became 796\r?\n$")
set(host_by_slot_SAYS "^1000 became 796\r?\n$")
set(host_with_delegate_SAYS "^190 became 40\r?\nand then 90\r?\n256 pixels are below the background\r?\n$")
set(offline_store_host_SAYS
  "^3 corrections\r?\ngain 1: 1000 became 950\r?\ngain 4: 1000 became 800\r?\nrefused with code 513\r?\n$")
set(opencl_host_SAYS "^6 of 6 images are alike; 3 backgrounds were uploaded\n\
OpenCL on [^\n]+: [1-9][0-9]* images of 1024 x 1024 a second\nlibrary: [1-9][0-9]* images of 1024 x 1024 a second\n$")
set(c_host_SAYS "^1000 became 796\r?\n$")
set(CSharpHost_SAYS "^a delegate was given 16 x 16 pixels and a background of 204\n1000 became 796\n$")
