"""Measures what the supervisor costs on this machine and judges it against its goals."""
