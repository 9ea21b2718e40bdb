void main() { gl_Position = ftransform(); }
