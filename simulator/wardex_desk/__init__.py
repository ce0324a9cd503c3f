"""A camera device on the desk: the unmodified supervisor on a simulated device, in a private box."""
