void main() { gl_FragColor = undefinedThing; }
